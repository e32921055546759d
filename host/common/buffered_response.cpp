#include "host/common/buffered_response.h"

#include <utility>

#include "base/exception_wall.h"
#include "base/letter_case.h"
#include "base/utf8.h"

namespace Corvane::Host {

BufferedResponse::BufferedResponse(std::uint32_t status, Headers headers, std::string body)
    : m_status(status), m_headers(std::move(headers)), m_body(std::move(body)) {}

const wchar_t* BufferedResponse::GetHeader(const wchar_t* name) {
  return BehindWall<const wchar_t*>(nullptr, [&]() -> const wchar_t* {
    const auto header = m_headers.find(LowerAscii(OrEmpty(name)));
    return header == m_headers.end() ? nullptr : header->second.c_str();
  });
}

const wchar_t* BufferedResponse::GetContentType() {
  const wchar_t* const type = GetHeader(L"content-type");
  return type ? type : L"";
}

}  // namespace Corvane::Host
