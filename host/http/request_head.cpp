#include "host/http/request_head.h"

#include <strings.h>

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "host/http/request_url.h"

namespace Corvane::Host {
namespace {

// RFC 4648, 4.
std::string Base64(std::string_view bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::string_view group = bytes.substr(i, 3);
    std::uint32_t bits = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      bits = bits << 8 | (k < group.size() ? static_cast<unsigned char>(group[k]) : 0U);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      text += k <= group.size() ? kDigits[bits >> (18 - 6 * k) & 63] : '=';
    }
  }
  return text;
}

std::ptrdiff_t CountHeaders(const WireRequest& request, const char* name) {
  return std::count_if(request.headers.begin(), request.headers.end(), [name](const auto& header) {
    return strcasecmp(header.first.c_str(), name) == 0;
  });
}

void AddLine(std::string_view name, std::string_view value, std::string* head) {
  head->append(name).append(": ").append(value).append("\r\n");
}

}  // namespace

const wchar_t* BuildStreamedHead(const WireRequest& request, std::string* head) {
  if (request.verb != "POST" && request.verb != "PUT") return L"a streamed body needs POST or PUT";
  if (!request.body.empty()) return L"a body beside the streamed one";
  // The only coding that gets here is "chunked".
  if (CountHeaders(request, "transfer-encoding") != 1) {
    return L"a streamed body needs one header Transfer-Encoding";
  }
  const UrlInHead url = SplitUrl(request.url);
  if (url.host.empty()) return L"a resource that makes no URL";
  *head = request.verb + ' ' + url.target + " HTTP/1.1\r\n";
  AddLine("Host", url.host, head);
  if (url.tls && !request.password.empty() && CountHeaders(request, "authorization") == 0) {
    if (request.userName.find(':') != std::string::npos) return L"a colon in the user name";
    AddLine("Authorization", "Basic " + Base64(request.userName + ':' + request.password), head);
  }
  for (const auto& [name, value] : request.headers) AddLine(name, value, head);
  if (!request.contentType.empty()) AddLine("Content-Type", request.contentType, head);
  if (CountHeaders(request, "connection") == 0) AddLine("Connection", "close", head);
  head->append("\r\n");
  return nullptr;
}

}  // namespace Corvane::Host
