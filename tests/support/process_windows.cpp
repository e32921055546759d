// RunInto for Windows.
#include "tests/support/process.h"

#include <gtest/gtest.h>
#include <windows.h>

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
bool Start(const std::filesystem::path& program, std::wstring& commandLine, STARTUPINFOW& start,
           PROCESS_INFORMATION* process) {
  constexpr int kTries = 5;
  for (int tries = 0; tries < kTries; ++tries) {
    if (CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr,
                       nullptr, &start, process)) {
      return true;
    }
    if (GetLastError() != ERROR_INTERNAL_ERROR) break;
  }
  return false;
}

}  // namespace

int RunInto(const std::filesystem::path& program, const std::vector<std::string>& arguments,
            const std::filesystem::path& output, const std::filesystem::path& error) {
  std::wstring commandLine = Quote(program.wstring());
  for (const std::string& argument : arguments) {
    commandLine +=
        L' ' +
        Quote(std::filesystem::path(std::u8string(argument.begin(), argument.end())).wstring());
  }
  STARTUPINFOW start = {};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdOutput = CreateInheritable(output);
  start.hStdError = CreateInheritable(error);
  PROCESS_INFORMATION process = {};
  DWORD exitStatus = static_cast<DWORD>(-1);
  if (Start(program, commandLine, start, &process)) {
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &exitStatus);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
  } else {
    ADD_FAILURE() << "no process: error " << GetLastError();
  }
  CloseHandle(start.hStdOutput);
  CloseHandle(start.hStdError);
  return static_cast<int>(exitStatus);
}

}  // namespace Corvane::Test
