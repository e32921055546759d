#include "host/http/wire_request.h"

#include <algorithm>

#include "base/letter_case.h"
#include "base/utf8.h"
#include "host/http/request_url.h"

namespace Corvane::Host {
namespace {

bool IsHeaderToken(std::string_view text) {
  static constexpr std::string_view kPunctuation = "!#$%&'*+-.^_`|~";
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           kPunctuation.find(c) != std::string_view::npos;
  });
}

bool HeaderHasControl(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F;
  });
}

bool FramesMessage(std::wstring_view name, std::wstring_view value) {
  return EqualsIgnoreAsciiCase(name, L"host") || EqualsIgnoreAsciiCase(name, L"content-length") ||
         (EqualsIgnoreAsciiCase(name, L"transfer-encoding") &&
          !EqualsIgnoreAsciiCase(value, L"chunked"));
}

// A request's password makes its credentials its own. A bare user name, which some requests always
// have, gives way to the address's credentials, and without those answers a challenge alone.
const wchar_t* TakeCredentials(const RequestSettings& settings, const DeviceSettings& device,
                               WireRequest* request) {
  const bool own =
      !settings.password.empty() || (device.userName.empty() && device.password.empty());
  request->userName = ToUtf8(own ? settings.userName : device.userName);
  request->password = ToUtf8(own ? settings.password : device.password);
  return HeaderHasControl(request->userName) || HeaderHasControl(request->password)
             ? L"a control character in the credentials"
             : nullptr;
}

void DropCredentials(WireRequest* request) {
  request->userName.clear();
  request->password.clear();
}

void DropSecrets(WireRequest* request) {
  DropCredentials(request);
  std::erase_if(request->headers, [](const auto& header) {
    const std::string name = LowerAscii(header.first);
    return name == "authorization" || name == "proxy-authorization";
  });
}

// Null, or why this header cannot go out. The texts in UTF-8 on success.
const wchar_t* CheckHeader(std::wstring_view name, std::wstring_view value,
                           std::pair<std::string, std::string>* header) {
  *header = {ToUtf8(name), ToUtf8(value)};
  if (!IsHeaderToken(header->first)) return L"a header name that is no token";
  if (HeaderHasControl(header->second)) return L"a control character in a header";
  if (FramesMessage(name, value)) return L"a header that is the host's to write";
  return nullptr;
}

}  // namespace

std::ptrdiff_t WireRequest::CountHeaders(std::string_view name) const {
  return std::count_if(headers.begin(), headers.end(),
                       [name](const auto& header) { return LowerAscii(header.first) == name; });
}

const wchar_t* BuildWireRequest(const RequestSettings& settings, const DeviceSettings& device,
                                bool forIPP, WireRequest* request) {
  request->verb = ToUtf8(settings.verb);
  if (!IsHeaderToken(request->verb)) return L"a verb that is no token";
  const bool expectsBody = settings.verb == L"POST" || settings.verb == L"PUT";
  request->body = settings.body;
  request->hasBody = expectsBody || !settings.body.empty();
  if (request->hasBody && settings.verb == L"HEAD") return L"a body with HEAD";

  if (const wchar_t* const fault = TakeCredentials(settings, device, request)) return fault;
  for (const auto& [name, value] : settings.headers) {
    if (const wchar_t* const fault = CheckHeader(name, value, &request->headers.emplace_back())) {
      return fault;
    }
  }
  request->contentType = ToUtf8(settings.contentType);
  if (HeaderHasControl(request->contentType)) return L"a control character in a header";
  if (SplitUrl(request->url).host.empty()) return L"a resource that makes no URL";
  if (request->CountHeaders("authorization") != 0) DropCredentials(request);
  if (request->IsOverTls()) return nullptr;
  request->allowsBasic = device.basicInClear;
  if (device.secretsOverTlsOnly.value_or(forIPP)) DropSecrets(request);
  return nullptr;
}

}  // namespace Corvane::Host
