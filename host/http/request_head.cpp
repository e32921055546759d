#include "host/http/request_head.h"

#include <string_view>

#include "base/letter_case.h"
#include "base/utf8.h"
#include "host/http/challenge.h"
#include "host/http/request_url.h"

namespace Corvane::Host {
namespace {

void AddHeadLine(std::string_view name, std::string_view value, std::string* head) {
  head->append(name).append(value.empty() ? ":" : ": ").append(value).append("\r\n");
}

// All lines but those that frame the body.
std::string BeginHead(const WireRequest& request, const std::string& authorization) {
  const UrlInHead url = SplitUrl(request.url);
  std::string head = request.verb + ' ' + url.target + " HTTP/1.1\r\n";
  AddHeadLine("Host", url.host, &head);
  if (!authorization.empty()) AddHeadLine("Authorization", authorization, &head);
  for (const auto& [name, value] : request.headers) AddHeadLine(name, value, &head);
  if (!request.contentType.empty()) AddHeadLine("Content-Type", request.contentType, &head);
  return head;
}

}  // namespace

std::string BuildHead(const WireRequest& request, const std::string& authorization) {
  WireRequest whole = request;
  // The body's length is known: a coding that the caller asks for has no use.
  std::erase_if(whole.headers,
                [](const auto& header) { return LowerAscii(header.first) == "transfer-encoding"; });
  if (whole.CountHeaders("accept") == 0) {
    whole.headers.insert(whole.headers.begin(), {"Accept", "*/*"});
  }
  std::string head = BeginHead(whole, authorization);
  if (request.hasBody) AddHeadLine("Content-Length", std::to_string(request.body.size()), &head);
  return head + "\r\n";
}

const wchar_t* BuildStreamedHead(const WireRequest& request, std::string* head) {
  if (request.verb != "POST" && request.verb != "PUT") return L"a streamed body needs POST or PUT";
  if (!request.body.empty()) return L"a body beside the streamed one";
  // The only coding that gets here is "chunked".
  if (request.CountHeaders("transfer-encoding") != 1) {
    return L"a streamed body needs one header Transfer-Encoding";
  }
  std::string authorization;
  if (request.IsOverTls() && !request.password.empty()) {
    authorization = BasicAuthorization(request);
    if (authorization.empty()) return L"a colon in the user name";
  }
  *head = BeginHead(request, authorization);
  if (request.CountHeaders("connection") == 0) AddHeadLine("Connection", "close", head);
  head->append("\r\n");
  return nullptr;
}

}  // namespace Corvane::Host
