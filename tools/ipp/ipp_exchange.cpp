#include "tools/ipp/ipp_exchange.h"

#include <cstddef>
#include <cstdio>

#include "base/utf8.h"
#include "corvane/handles.h"
#include "corvane/http_request.h"
#include "corvane/http_response.h"
#include "ipp/wire/values.h"
#include "ipp/wire/writer.h"
#include "tools/options/device.h"
#include "tools/output/failure.h"
#include "tools/output/text.h"

namespace Corvane::Tool {

std::string BeginIPPRequest(int operation, const std::string& printerUri) {
  const auto header = MakeIPPHeader(operation);
  std::string request(header.begin(), header.end());
  request += static_cast<char>(IPPTag::kOperationAttributes);
  // These three come first, in this order (RFC 8011, 4.1.4 and 4.1.5).
  AppendIPPValue(&request, IPPTag::kCharset, "attributes-charset", "utf-8");
  AppendIPPValue(&request, IPPTag::kNaturalLanguage, "attributes-natural-language", "en");
  AppendIPPValue(&request, IPPTag::kUri, "printer-uri", printerUri);
  return request;
}

std::optional<IPPMessage> ExchangeIPP(Address& address, std::uint32_t port, const std::string& path,
                                      std::string request, std::string* problem) {
  // Groups are a byte each at the least and hundreds in memory and output; no printer has so many
  // jobs.
  constexpr std::size_t kMaxGroups = 10'000;
  request += static_cast<char>(IPPTag::kEndOfAttributes);
  RefPtr<HTTPRequest> http;
  if (address.CreateIPPHTTPRequest(http.Receive(), port) != S_OK || !http) {
    *problem = "the device has no IPP";
    return std::nullopt;
  }
  http->SetMethod(L"POST");
  http->SetURI(ToWide(path).c_str());
  http->SetContentType(L"application/ipp");
  http->SetRequestData(request.data(), static_cast<std::uint32_t>(request.size()));
  HTTPResponse* response = nullptr;
  if (http->GetResponse(&response) != S_OK || !response || response->GetStatusCode() != kHttpOk) {
    *problem = LastFailureOf(address);
    if (problem->empty()) *problem = "no answer";
    return std::nullopt;
  }
  IPPMessage answer;
  const IPPReading reading =
      ReadIPPMessage({response->GetContent(), response->GetContentLength()}, &answer);
  const IPPHeader& header = answer.Header();
  // A truncated list is not used.
  if (header.IsSpoken() && reading == IPPReading::kWhole && answer.Groups().size() <= kMaxGroups) {
    return answer;
  }
  *problem = header.IsVersion1() ? VersionText("1." + std::to_string(header.minor))
                                 : "the device answers, but not with IPP";
  return std::nullopt;
}

std::string StatusText(const IPPMessage& answer) {
  constexpr std::size_t kMaxMessageBytes = 255;  // RFC 8011, 4.1.6.2
  char code[16];
  std::snprintf(code, sizeof code, "0x%04X", static_cast<unsigned>(answer.Header().code));
  std::string text = std::string("IPP status ") + code;
  const auto said = IPPTextOf(answer, answer.Find(IPPTag::kOperationAttributes, "status-message"));
  if (said && said->size() <= kMaxMessageBytes) text += ": " + EscapeText(*said);
  return text;
}

}  // namespace Corvane::Tool
