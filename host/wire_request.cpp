#include "host/wire_request.h"

#include <algorithm>

#include "host/text.h"

namespace Corvane::Host {
namespace {

bool IsToken(std::string_view text) {
  static constexpr std::string_view kPunctuation = "!#$%&'*+-.^_`|~";
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           kPunctuation.find(c) != std::string_view::npos;
  });
}

bool HasControl(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F;
  });
}

bool FramesMessage(std::wstring_view name, std::wstring_view value) {
  return EqualsIgnoreCase(name, L"host") || EqualsIgnoreCase(name, L"content-length") ||
         (EqualsIgnoreCase(name, L"transfer-encoding") && !EqualsIgnoreCase(value, L"chunked"));
}

// A request's password makes its credentials its own. A bare user name, which some requests always
// have, gives way to the address's credentials, and without those answers a challenge alone.
const wchar_t* TakeCredentials(const RequestSettings& settings, const DeviceSettings& device,
                               WireRequest* request) {
  const bool own =
      !settings.password.empty() || (device.userName.empty() && device.password.empty());
  request->userName = ToUtf8(own ? settings.userName : device.userName);
  request->password = ToUtf8(own ? settings.password : device.password);
  return HasControl(request->userName) || HasControl(request->password)
             ? L"a control character in the credentials"
             : nullptr;
}

const wchar_t* AddHeaderLine(std::wstring_view name, std::wstring_view value,
                             WireRequest* request) {
  const std::string narrowName = ToUtf8(name);
  const std::string narrowValue = ToUtf8(value);
  if (!IsToken(narrowName)) return L"a header name that is no token";
  if (HasControl(narrowValue)) return L"a control character in a header";
  if (FramesMessage(name, value)) return L"a header that is the host's to write";
  // "Name;" is how curl is told of a header without a value.
  request->headerLines.push_back(narrowValue.empty() ? narrowName + ';'
                                                     : narrowName + ": " + narrowValue);
  return nullptr;
}

}  // namespace

const wchar_t* BuildWireRequest(const RequestSettings& settings, const DeviceSettings& device,
                                WireRequest* request) {
  request->verb = ToUtf8(settings.verb);
  if (!IsToken(request->verb)) return L"a verb that is no token";
  const bool expectsBody = settings.verb == L"POST" || settings.verb == L"PUT";
  request->body = settings.body;
  request->hasBody = expectsBody || !settings.body.empty();
  if (request->hasBody && settings.verb == L"HEAD") return L"a body with HEAD";

  if (const wchar_t* const fault = TakeCredentials(settings, device, request)) return fault;
  for (const auto& [name, value] : settings.headers) {
    if (const wchar_t* const fault = AddHeaderLine(name, value, request)) return fault;
  }
  if (settings.contentType.empty()) {
    request->headerLines.emplace_back("Content-Type:");  // none, where curl has one for POST
  } else if (const wchar_t* const fault =
                 AddHeaderLine(L"Content-Type", settings.contentType, request)) {
    return fault;
  }
  request->headerLines.emplace_back("Expect:");  // many devices do not know 100-continue
  return nullptr;
}

}  // namespace Corvane::Host
