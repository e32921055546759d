// Paths as UTF-8 and as wide text, whatever the locale or code page.
#ifndef CORVANE_BASE_UTF8_PATH_H_
#define CORVANE_BASE_UTF8_PATH_H_

#include <filesystem>
#include <string>
#include <string_view>

#include "base/utf8.h"

namespace Corvane {

// Where paths are bytes, they stay as they are.
inline std::filesystem::path PathFromUtf8(std::string_view utf8) {
  return std::u8string(utf8.begin(), utf8.end());
}

inline std::wstring WideFromPath(const std::filesystem::path& path) {
  const std::u8string utf8 = path.u8string();
  return ToWide(std::string(utf8.begin(), utf8.end()));
}

}  // namespace Corvane

#endif  // CORVANE_BASE_UTF8_PATH_H_
