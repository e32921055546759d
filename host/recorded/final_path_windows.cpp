#include <windows.h>

#include <string>

#include "host/recorded/final_path.h"

namespace Corvane::Host {

// The standard library of this compiler knows no links on Windows; the system does.
std::optional<std::filesystem::path> FinalPath(const std::filesystem::path& path) {
  constexpr DWORD kMaxPathChars = 32768;  // the system's own limit, with the terminator
  const HANDLE file =
      CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);  // folders too
  if (file == INVALID_HANDLE_VALUE) return std::nullopt;
  const struct Closer {
    HANDLE file;
    ~Closer() { CloseHandle(file); }
  } closer{file};
  std::wstring text(kMaxPathChars, L'\0');
  const DWORD chars = GetFinalPathNameByHandleW(file, text.data(), kMaxPathChars, 0);
  if (chars == 0 || chars >= kMaxPathChars) return std::nullopt;
  text.resize(chars);
  return text;
}

}  // namespace Corvane::Host
