// Pieces of IPP messages, and of what carries them.
#ifndef CORVANE_TESTS_SUPPORT_IPP_BYTES_H_
#define CORVANE_TESTS_SUPPORT_IPP_BYTES_H_

#include <string>
#include <string_view>

#include "ipp/wire/writer.h"

namespace Corvane::Test {

inline std::string IppGroup(int tag) { return std::string(1, static_cast<char>(tag)); }

// Without a name another value of the attribute before.
inline std::string IppValue(int tag, std::string_view name, std::string_view bytes) {
  std::string value;
  AppendIPPValue(&value, tag, name, bytes);
  return value;
}

inline std::string IppNumber(int tag, std::string_view name, int number) {
  return IppValue(tag, name, BigEndian({number}));
}

// To a request of the library, or of the tool.
inline std::string LibraryAnswer(int status, std::string_view groups) {
  const auto header = MakeIPPHeader(status);
  return std::string(header.begin(), header.end()).append(groups) + '\3';
}

// Of a printer that knows IPP 1.1 alone: server-error-version-not-supported.
inline const std::string kVersion1Answer = {"\1\1\5\3\0\0\0\x64\3", 9};

inline std::string IppResponse(const std::string& body, int status = 200) {
  return "HTTP/1.1 " + std::to_string(status) +
         " Said\r\nContent-Type: application/ipp\r\nContent-Length: " +
         std::to_string(body.size()) + "\r\n\r\n" + body;
}

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_IPP_BYTES_H_
