#include "tools/ipp/ipp_exchange.h"

#include <cstddef>
#include <cstdio>

#include "base/utf8.h"
#include "corvane/handles.h"
#include "corvane/http_request.h"
#include "corvane/http_response.h"
#include "tools/ipp/ipp_values.h"
#include "tools/options/device.h"
#include "tools/output/text_escape.h"

namespace Corvane::Tool {

std::optional<IPPAnswer> ExchangeIPP(Address& address, std::uint32_t port, const std::string& path,
                                     const std::string& message, std::string* problem) {
  constexpr std::uint32_t kHttpOk = 200;
  RefPtr<HTTPRequest> request;
  if (address.CreateIPPHTTPRequest(request.Receive(), port) != S_OK || !request) {
    *problem = "the device has no IPP";
    return std::nullopt;
  }
  request->SetMethod(L"POST");
  request->SetURI(ToWide(path).c_str());
  request->SetContentType(L"application/ipp");
  request->SetRequestData(message.data(), static_cast<std::uint32_t>(message.size()));
  HTTPResponse* response = nullptr;
  if (request->GetResponse(&response) != S_OK || !response ||
      response->GetStatusCode() != kHttpOk) {
    *problem = LastFailureOf(address);
    if (problem->empty()) *problem = "no answer";
    return std::nullopt;
  }
  std::optional<IPPAnswer> answer =
      ReadIPPAnswer({response->GetContent(), response->GetContentLength()});
  if (!answer) *problem = "the device answers, but not with IPP";
  return answer;
}

std::string StatusText(const IPPAnswer& answer) {
  constexpr std::size_t kMaxMessageBytes = 255;  // RFC 8011, 4.1.6.2
  char code[16];
  std::snprintf(code, sizeof code, "0x%04X", static_cast<unsigned>(answer.status));
  std::string text = std::string("IPP status ") + code;
  const auto said = TextOf(answer.Find(IPPTag::kOperationGroup, "status-message"));
  if (said && said->size() <= kMaxMessageBytes) text += ": " + EscapeText(*said);
  return text;
}

}  // namespace Corvane::Tool
