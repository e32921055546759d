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

namespace fs = std::filesystem;

// Not as binary: Windows then gives plain line ends.
std::string ReadAll(const fs::path& file) {
  std::ifstream stream(file);
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

#ifdef _WIN32

// One argument as the C runtime of the child takes it apart again.
std::wstring Quote(const std::wstring& text) {
  std::wstring quoted = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t c : text) {
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    if (c == L'"') quoted.append(quoted.size() - quoted.find_last_not_of(L'\\'), L'\\');
    quoted += c;
  }
  return quoted.append(backslashes, L'\\') + L'"';
}

HANDLE CreateInheritable(const fs::path& file) {
  SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
  return CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inheritable, CREATE_ALWAYS, 0,
                     nullptr);
}

int RunInto(const fs::path& program, const std::vector<std::string>& arguments,
            const fs::path& output, const fs::path& error) {
  std::wstring commandLine = Quote(program.wstring());
  for (const std::string& argument : arguments) {
    commandLine +=
        L' ' + Quote(fs::path(std::u8string(argument.begin(), argument.end())).wstring());
  }
  STARTUPINFOW start = {};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdOutput = CreateInheritable(output);
  start.hStdError = CreateInheritable(error);
  PROCESS_INFORMATION process = {};
  DWORD exitStatus = static_cast<DWORD>(-1);
  if (CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr,
                     nullptr, &start, &process)) {
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &exitStatus);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
  }
  CloseHandle(start.hStdOutput);
  CloseHandle(start.hStdError);
  return static_cast<int>(exitStatus);
}

#else

int RunInto(const fs::path& program, const std::vector<std::string>& arguments,
            const fs::path& output, const fs::path& error) {
  std::vector<char*> argv = {const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT, 0600);
  posix_spawn_file_actions_addopen(&actions, 2, error.c_str(), O_WRONLY | O_CREAT, 0600);
  pid_t child = 0;
  int status = -1;
  const int failure = posix_spawn(&child, program.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  const bool exited = failure == 0 && waitpid(child, &status, 0) == child && WIFEXITED(status);
  return exited ? WEXITSTATUS(status) : -1;
}

#endif

}  // namespace

ProcessResult RunProcess(const fs::path& program, const std::vector<std::string>& arguments) {
  const TempFolder folder;
  const fs::path output = folder.Path() / "output";
  const fs::path error = folder.Path() / "error";
  const int exitStatus = RunInto(program, arguments, output, error);
  return {exitStatus, ReadAll(output), ReadAll(error)};
}

}  // namespace Corvane::Test
