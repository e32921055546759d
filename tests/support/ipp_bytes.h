// IPP messages byte for byte (RFC 8010, 3.1).
#ifndef CORVANE_TESTS_SUPPORT_IPP_BYTES_H_
#define CORVANE_TESTS_SUPPORT_IPP_BYTES_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace Corvane::Test {

inline std::string BigEndian(std::uint32_t number, int bytes) {
  std::string wire;
  while (bytes-- > 0) wire += static_cast<char>(number >> bytes * 8);
  return wire;
}

// Behind its length.
inline std::string Sized(std::string_view bytes) {
  return BigEndian(static_cast<std::uint32_t>(bytes.size()), 2).append(bytes);
}

inline std::string IppGroup(int tag) { return std::string(1, static_cast<char>(tag)); }

// Without a name another value of the attribute before.
inline std::string IppValue(int tag, std::string_view name, std::string_view bytes) {
  return static_cast<char>(tag) + Sized(name) + Sized(bytes);
}

inline std::string IppNumber(int tag, std::string_view name, int number) {
  return IppValue(tag, name, BigEndian(static_cast<std::uint32_t>(number), 4));
}

// `version` and `id` as on the wire, two bytes and four.
inline std::string IppMessage(std::string_view version, int code, std::string_view id,
                              std::string_view groups) {
  std::string message(version);
  message += BigEndian(static_cast<std::uint32_t>(code), 2);
  return message.append(id).append(groups) + '\3';
}

// To a request of the library, or of the tool.
inline std::string LibraryAnswer(int status, std::string_view groups) {
  return IppMessage({"\2\0", 2}, status, {"\0\0\0\x64", 4}, groups);
}

// Of a printer that knows IPP 1.1 alone: server-error-version-not-supported.
inline const std::string kVersion1Answer = IppMessage("\1\1", 0x0503, {"\0\0\0\x64", 4}, "");

inline std::string IppResponse(const std::string& body) {
  return "HTTP/1.1 200 OK\r\nContent-Type: application/ipp\r\nContent-Length: " +
         std::to_string(body.size()) + "\r\n\r\n" + body;
}

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_IPP_BYTES_H_
