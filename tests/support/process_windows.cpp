// RunProcess for Windows.
#include "tests/support/process.h"

#include <windows.h>

#include <filesystem>

#include "base/utf8.h"
#include "tests/support/temp_folder.h"

namespace Corvane::Test {
namespace {

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

HANDLE CreateInheritable(const std::filesystem::path& file) {
  SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
  return CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inheritable, CREATE_ALWAYS, 0,
                     nullptr);
}

// Wine cannot, once in some thousand times, and says that it has an internal error; nothing of the
// child has run then.
bool Start(std::wstring& commandLine, STARTUPINFOW& start, PROCESS_INFORMATION* process) {
  constexpr int kTries = 5;
  for (int tries = 0; tries < kTries; ++tries) {
    if (CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                       &start, process)) {
      return true;
    }
    if (GetLastError() != ERROR_INTERNAL_ERROR) break;
  }
  return false;
}

}  // namespace

ProcessResult RunProcess(const std::vector<std::string>& command) {
  constexpr DWORD kTimeoutMs = 120'000;
  const TempFolder streams;
  std::wstring commandLine;
  for (const std::string& part : command) commandLine += Quote(ToWide(part)) + L' ';
  STARTUPINFOW start = {};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdOutput = CreateInheritable(streams.Path() / "output");
  start.hStdError = CreateInheritable(streams.Path() / "error");
  PROCESS_INFORMATION process = {};
  DWORD exitStatus = static_cast<DWORD>(-1);
  const bool started = Start(commandLine, start, &process);
  const DWORD error = GetLastError();
  if (started) {
    if (WaitForSingleObject(process.hProcess, kTimeoutMs) == WAIT_OBJECT_0) {
      GetExitCodeProcess(process.hProcess, &exitStatus);
    } else {
      TerminateProcess(process.hProcess, exitStatus);
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
  }
  CloseHandle(start.hStdOutput);
  CloseHandle(start.hStdError);
  return {static_cast<int>(exitStatus), streams.Read("output"),
          started ? streams.Read("error") : "no process: error " + std::to_string(error)};
}

}  // namespace Corvane::Test
