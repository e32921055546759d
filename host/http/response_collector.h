// What a device's response brings, collected within limits.
#ifndef CORVANE_HOST_HTTP_RESPONSE_COLLECTOR_H_
#define CORVANE_HOST_HTTP_RESPONSE_COLLECTOR_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "host/common/buffered_response.h"

namespace Corvane::Host {

// What came back: a whole response, or an error code with a remark for people.
struct WireResult {
  std::uint32_t error = 0;
  std::wstring remark;
  std::uint32_t status = 0;
  BufferedResponse::Headers headers;
  std::string body;
  std::string location;  // the header's bytes; empty for none
  // The connection stands where the next response begins, beyond doubt.
  bool reusable = false;
};

// All heads of one exchange, against a device that sends header lines, interim responses or
// challenges without end.
constexpr std::size_t kMaxHeaderBytes = std::size_t{64} << 10;

// "HTTP/1.1 401 Unauthorized" is 401; 0 for what is no status line.
std::uint32_t StatusOf(std::string_view line);

// Collects the status, fields and body of one response after another; the last is the result.
// Whoever calls it has found where lines and bodies begin and end. An operation that returns false
// has ended the exchange, with the reason as the result's error.
class ResponseCollector {
 public:
  explicit ResponseCollector(std::size_t maxBodyBytes) : m_maxBodyBytes(maxBodyBytes) {}

  // So many bytes of heads, trailers or chunk extensions more.
  bool CountHeaderBytes(std::size_t bytes);
  // Another response begins: what the former brought is forgotten.
  void Begin(std::uint32_t status);
  // A field line (RFC 9112, 5) with or without its line end.
  bool Field(std::string_view line);
  bool Body(std::string_view bytes);

  // Each returns false.
  bool Fail(std::uint32_t error, std::wstring remark);
  bool FailHeaderTooLarge();
  bool FailBodyTooLarge();

  bool Failed() const { return m_result.error != 0; }
  std::size_t BodyBytesLeft() const { return m_maxBodyBytes - m_result.body.size(); }
  // The value of a field, named in lower case; null for none.
  const std::wstring* Find(const wchar_t* name) const;
  const WireResult& Result() const { return m_result; }
  // Also where `location` is filled.
  WireResult TakeResult();

 private:
  const std::size_t m_maxBodyBytes;
  std::size_t m_headerBytes = 0;
  WireResult m_result;
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_RESPONSE_COLLECTOR_H_
