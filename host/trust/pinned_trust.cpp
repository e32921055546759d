#include "host/trust/pinned_trust.h"

#include <utility>

#include "base/letter_case.h"
#include "base/utf8.h"
#include "corvane/error_codes.h"
#include "host/http/curl_connection.h"
#include "host/trust/peer_key.h"

namespace Corvane::Host {
namespace {

constexpr std::string_view kTlsScheme = "https://";

// "printer.test:443": the URLs of this host always have their port.
std::string NameOf(const std::string& url) {
  const std::string_view rest = std::string_view(url).substr(kTlsScheme.size());
  return LowerAscii(rest.substr(0, rest.find('/')));
}

}  // namespace

SettledTrust SettleTrust(const TlsTrust& trust, const std::string& url, std::int64_t connectMs,
                         const std::atomic<bool>& cancelled) {
  if (trust.pinFile.empty() || !url.starts_with(kTlsScheme)) return {trust, 0, {}};
  const std::string name = NameOf(url);
  const PinFile file(trust.pinFile);
  PinLookup lookup = file.Find(name);
  if (lookup.error == 0 && !lookup.pin) {
    TlsTrust any = trust;
    any.verify = false;
    CurlConnection connection;
    const std::uint32_t error = connection.Open(url, any, connectMs, cancelled);
    if (error != 0) return {{}, error, connection.Why()};
    const std::string key = connection.ShownKey();
    if (key.empty()) return {{}, kErrorSecureFailure, L"the device shows no key"};
    lookup = file.Record(name, key, connectMs, cancelled);
  }
  if (!lookup.pin) return {{}, lookup.error, std::move(lookup.remark)};
  SettledTrust settled{trust, 0, {}};
  settled.trust.pin = *std::move(lookup.pin);
  return settled;
}

std::wstring KeyChanged(CURL* handle, const TlsTrust& trust) {
  if (!trust.pin) return L"another key than the one that was trusted";
  const std::string shown = PeerKey(handle);
  std::wstring text = L"the key of " + WideFromLatin1(trust.pin->name) + L" has changed from " +
                      WideFromLatin1(trust.pin->key);
  if (!shown.empty()) text += L" to " + WideFromLatin1(shown);
  return text + L"; where the device is known to have a new one, remove line " +
         std::to_wstring(trust.pin->line) + L" of " +
         ToWideStrictly(trust.pinFile).value_or(WideFromLatin1(trust.pinFile));
}

}  // namespace Corvane::Host
