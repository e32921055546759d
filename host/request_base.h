// What the requests of every kind of address share: settings, the one exchange, its outcome.
#ifndef CORVANE_HOST_REQUEST_BASE_H_
#define CORVANE_HOST_REQUEST_BASE_H_

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "corvane/transport.h"
#include "host/last_failure.h"

namespace Corvane::Host {

struct RequestSettings {
  std::wstring uri;
  std::wstring verb = L"GET";
  std::wstring userName;
  std::wstring password;
  std::wstring contentType;
  std::vector<std::pair<std::wstring, std::wstring>> headers;  // without Content-Type
  std::string body;
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
  // Means nothing to this host.
  void SetOption(std::uint32_t) override {}
  std::uint32_t GetLastError() override { return m_error; }
  void Cancel() override { m_cancelled.store(true); }

 protected:
  explicit RequestBase(std::shared_ptr<LastFailure> lastFailure);

  // The resource, as messages name it.
  virtual std::wstring Describe(const RequestSettings& settings) const = 0;
  virtual Outcome Perform(const RequestSettings& settings) = 0;

  const std::atomic<bool>& Cancelled() const { return m_cancelled; }

 private:
  void Set(std::wstring* setting, const wchar_t* text) noexcept;
  Outcome PerformOnce() noexcept;
  void Report(const Outcome& outcome) noexcept;

  const std::shared_ptr<LastFailure> m_lastFailure;
  RequestSettings m_settings;
  std::uint32_t m_settingsError = 0;  // of the first setter that was given something unusable
  std::uint32_t m_error = 0;
  bool m_performed = false;
  std::unique_ptr<HTTPResponse> m_response;
  std::atomic<bool> m_cancelled{false};
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_REQUEST_BASE_H_
