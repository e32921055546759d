#include "tests/support/process.h"

#include <fstream>
#include <iterator>

#include "tests/support/temp_folder.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace Corvane::Test {
namespace {

std::string ReadAll(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

#ifdef _WIN32

// One argument as the C runtime of the child takes it apart again.
std::wstring Quote(const std::string& argument) {
  const std::wstring text =
      std::filesystem::path(std::u8string(argument.begin(), argument.end())).wstring();
  std::wstring quoted = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t c : text) {
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    if (c == L'"') quoted.append(quoted.size() - quoted.find_last_not_of(L'\\'), L'\\');
    quoted += c;
  }
  return quoted.append(backslashes, L'\\') + L'"';
}

HANDLE OpenInheritable(const std::filesystem::path& file, DWORD access, DWORD disposition) {
  SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
  return CreateFileW(file.c_str(), access, FILE_SHARE_READ, &inheritable, disposition, 0, nullptr);
}

int RunInto(const std::filesystem::path& program, const std::vector<std::string>& arguments,
            const std::filesystem::path& output, const std::filesystem::path& error) {
  const std::u8string programText = program.u8string();
  std::wstring commandLine = Quote(std::string(programText.begin(), programText.end()));
  for (const std::string& argument : arguments) commandLine += L' ' + Quote(argument);
  STARTUPINFOW start = {};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = OpenInheritable(L"NUL", GENERIC_READ, OPEN_EXISTING);
  start.hStdOutput = OpenInheritable(output, GENERIC_WRITE, CREATE_ALWAYS);
  start.hStdError = OpenInheritable(error, GENERIC_WRITE, CREATE_ALWAYS);
  PROCESS_INFORMATION process = {};
  DWORD exitStatus = static_cast<DWORD>(-1);
  if (CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr,
                     nullptr, &start, &process)) {
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &exitStatus);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
  }
  for (const HANDLE handle : {start.hStdInput, start.hStdOutput, start.hStdError}) {
    CloseHandle(handle);
  }
  return static_cast<int>(exitStatus);
}

std::string WithPlainLineEnds(std::string text) {
  for (std::size_t at = 0; (at = text.find("\r\n", at)) != std::string::npos; ++at) {
    text.erase(at, 1);
  }
  return text;
}

#else

int RunInto(const std::filesystem::path& program, const std::vector<std::string>& arguments,
            const std::filesystem::path& output, const std::filesystem::path& error) {
  std::vector<char*> argv = {const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT, 0600);
  posix_spawn_file_actions_addopen(&actions, 2, error.c_str(), O_WRONLY | O_CREAT, 0600);
  pid_t child = 0;
  int status = -1;
  const bool started =
      posix_spawn(&child, program.c_str(), &actions, nullptr, argv.data(), environ) == 0;
  posix_spawn_file_actions_destroy(&actions);
  if (!started || waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
  return WEXITSTATUS(status);
}

std::string WithPlainLineEnds(std::string text) { return text; }

#endif

}  // namespace

ProcessResult RunProcess(const std::filesystem::path& program,
                         const std::vector<std::string>& arguments) {
  const TempFolder folder;
  const std::filesystem::path output = folder.Path() / "output";
  const std::filesystem::path error = folder.Path() / "error";
  ProcessResult result;
  result.exitStatus = RunInto(program, arguments, output, error);
  result.output = WithPlainLineEnds(ReadAll(output));
  result.error = WithPlainLineEnds(ReadAll(error));
  return result;
}

}  // namespace Corvane::Test
