// What the requests of every kind of address share: settings, the one exchange, its outcome.
#ifndef CORVANE_HOST_COMMON_REQUEST_BASE_H_
#define CORVANE_HOST_COMMON_REQUEST_BASE_H_

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/exception_wall.h"
#include "corvane/error_codes.h"
#include "corvane/transport.h"
#include "host/common/last_failure.h"

namespace Corvane::Host {

struct RequestSettings {
  std::wstring uri;
  std::wstring verb = L"GET";
  std::wstring userName;
  std::wstring password;
  std::wstring contentType;
  std::vector<std::pair<std::wstring, std::wstring>> headers;  // without Content-Type
  std::string_view body;        // the request's, or its caller's for the time of the exchange
  std::uint32_t timeoutMs = 0;  // in place of the device's limit; 0: the device's
};

// Either a response or an error code other than 0.
struct Outcome {
  std::unique_ptr<HTTPResponse> response;
  std::uint32_t error = 0;
  std::wstring remark;  // why, for people: no credentials, no text of a body
};

// Every failure of an exchange, and every status other than 200, becomes the address's last
// failure. One thread, but for Cancel and the reference count.
class RequestBase : public HTTPRequest, public IDisposableImpl {
 public:
  std::uint32_t AddRef() override { return AddRefImpl(); }
  std::uint32_t AddRefConst() override { return AddRefImpl(); }
  std::uint32_t Dispose() override { return DisposeImpl(); }
  std::uint32_t Release() override { return DisposeImpl(); }

  const wchar_t* GetURI() override { return m_settings.uri.c_str(); }
  void SetURI(const wchar_t* path) override;
  void SetUserName(const wchar_t* userName) override;
  void SetPassword(const wchar_t* password) override;
  void SetMethod(const wchar_t* verb) override;
  // A Content-Type given here is that of SetContentType: a message has one.
  void AddHeader(const wchar_t* name, const wchar_t* value) override;
  void SetContentType(const wchar_t* contentType) override;
  void SetRequestData(const void* data, std::uint32_t size) override;
  // A failure is 0x8007 and the low half of GetLastError.
  HRESULT GetResponse(HTTPResponse** response) override;
  // Means nothing to a plain request.
  void SetOption(std::uint32_t) override {}
  std::uint32_t GetLastError() override { return m_error; }
  void Cancel() override { m_cancelled.store(true); }

 protected:
  explicit RequestBase(std::shared_ptr<LastFailure> lastFailure);

  // The resource, as messages name it.
  virtual std::wstring Describe(const RequestSettings& settings) const = 0;
  virtual Outcome Perform(const RequestSettings& settings) = 0;

  RequestSettings& Settings() { return m_settings; }
  const std::atomic<bool>& Cancelled() const { return m_cancelled; }
  bool Performed() const { return m_performed; }
  // What GetLastError tells until the next GetResponse.
  void SetError(std::uint32_t error) { m_error = error; }
  // A setting cannot be used: the exchange will fail.
  void RefuseSetting(std::uint32_t error) { m_settingsError = error; }

  // Begins the one exchange: an outcome without error when it may go on.
  Outcome Begin();
  // `exchange`, and the failure that its exception means.
  template <typename Exchange>
  static Outcome Guarded(Exchange exchange) noexcept;
  Outcome PerformOnce() noexcept;
  // What of TqHTTPRequestEx no plain request has.
  void ReplaceHeader(const wchar_t* name, const wchar_t* value);
  // `option` is a time-out, or the place of the address's text, which changes nothing.
  void SetTimeoutOrHost(std::uintptr_t option, const std::wstring& hostText);
  // The exchange has ended: GetResponse will give `outcome`, which is reported now.
  void Conclude(Outcome outcome) noexcept;

 private:
  void Set(std::wstring* setting, const wchar_t* text) noexcept;
  // Why the exchange failed; "" when it did not.
  std::wstring Sentence(const Outcome& outcome) const;

  const std::shared_ptr<LastFailure> m_lastFailure;
  RequestSettings m_settings;
  std::string m_body;                 // that SetRequestData gave
  std::uint32_t m_settingsError = 0;  // of the last setter that was given something unusable
  std::uint32_t m_error = 0;
  bool m_performed = false;
  std::optional<Outcome> m_outcome;  // concluded, and not asked for yet
  std::unique_ptr<HTTPResponse> m_response;
  std::atomic<bool> m_cancelled{false};
};

template <typename Exchange>
Outcome RequestBase::Guarded(Exchange exchange) noexcept {
  return CatchAll(exchange, [](Thrown why) -> Outcome {
    return {nullptr, why == Thrown::kNoMemory ? kErrorOutOfMemory : kErrorInternal, {}};
  });
}

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_COMMON_REQUEST_BASE_H_
