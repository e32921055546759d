// The device's answer to one HTTPRequest.
#ifndef CORVANE_HTTP_RESPONSE_H_
#define CORVANE_HTTP_RESPONSE_H_

#include <cstdint>

#include "corvane/platform.h"

namespace Corvane {

// Statuses that the library and its host act on (RFC 9110, 15).
constexpr std::uint32_t kHttpOk = 200;
constexpr std::uint32_t kHttpUnauthorized = 401;

// Owned by its request. Operations marked "host" are never called by the library.
class CORVANE_API HTTPResponse {
 public:
  HTTPResponse();
  HTTPResponse(const HTTPResponse& other);
  HTTPResponse& operator=(const HTTPResponse& other);

  virtual ~HTTPResponse();
  virtual std::uint32_t GetStatusCode() = 0;
  // host: the value of a response header, or null; names ignore case. Owned by the response.
  virtual const wchar_t* GetHeader(const wchar_t* name) = 0;
  // host: the value of the header Content-Type, "" when there is none. Owned by the response.
  virtual const wchar_t* GetContentType() = 0;
  // Bytes at GetContent, without the NUL that follows them.
  virtual std::uint32_t GetContentLength() = 0;
  // The body, followed by a NUL: read as 8-bit text up to the first NUL, or as GetContentLength
  // bytes. Never null for a body that is present, "" for an empty one. Owned by the response.
  virtual const char* GetContent() = 0;
};

}  // namespace Corvane

#endif  // CORVANE_HTTP_RESPONSE_H_
