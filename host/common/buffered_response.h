// A response that is held in memory whole.
#ifndef CORVANE_HOST_COMMON_BUFFERED_RESPONSE_H_
#define CORVANE_HOST_COMMON_BUFFERED_RESPONSE_H_

#include <cstdint>
#include <map>
#include <string>

#include "corvane/http_response.h"

namespace Corvane::Host {

// Immutable once made. The body has less than 4 GB.
class BufferedResponse final : public HTTPResponse {
 public:
  // By name in lower case.
  using Headers = std::map<std::wstring, std::wstring>;

  BufferedResponse(std::uint32_t status, Headers headers, std::string body);

  std::uint32_t GetStatusCode() override { return m_status; }
  const wchar_t* GetHeader(const wchar_t* name) override;
  const wchar_t* GetContentType() override;
  std::uint32_t GetContentLength() override { return static_cast<std::uint32_t>(m_body.size()); }
  const char* GetContent() override { return m_body.c_str(); }

 private:
  const std::uint32_t m_status;
  const Headers m_headers;
  const std::string m_body;
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_COMMON_BUFFERED_RESPONSE_H_
