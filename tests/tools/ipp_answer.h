// Answers of IPP printers, byte for byte (RFC 8010, 3.1).
#ifndef CORVANE_TESTS_TOOLS_IPP_ANSWER_H_
#define CORVANE_TESTS_TOOLS_IPP_ANSWER_H_

#include <cstddef>
#include <string>

namespace Corvane::Test {

inline std::string TwoBytes(std::size_t number) {
  return {static_cast<char>(number >> 8 & 0xFF), static_cast<char>(number & 0xFF)};
}

inline std::string IppGroup(int tag) { return std::string(1, static_cast<char>(tag)); }

// Without a name another value of the attribute before.
inline std::string IppValue(int tag, const std::string& name, const std::string& bytes) {
  return static_cast<char>(tag) + TwoBytes(name.size()) + name + TwoBytes(bytes.size()) + bytes;
}

// To the first request of a client.
inline std::string IppAnswer(unsigned status, const std::string& groups) {
  return "\1\1" + TwoBytes(status) + TwoBytes(0) + TwoBytes(1) + groups + '\3';
}

inline std::string IppResponse(const std::string& body) {
  return "HTTP/1.1 200 OK\r\nContent-Type: application/ipp\r\nContent-Length: " +
         std::to_string(body.size()) + "\r\n\r\n" + body;
}

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_TOOLS_IPP_ANSWER_H_
