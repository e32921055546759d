// The IPP provider over a host's transport.
#ifndef CORVANE_IPP_PROVIDER_IPP_PROVIDER_IMPL_H_
#define CORVANE_IPP_PROVIDER_IPP_PROVIDER_IMPL_H_

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "corvane/handles.h"
#include "corvane/ipp_provider.h"
#include "ipp/ipp_operations.h"
#include "ipp/provider/job_watch.h"
#include "ipp/provider/printer_uri.h"

namespace Corvane {

// Connection flags of a provider that was made from a path. Only a secure one keeps any.
constexpr std::uint32_t kIPPDefaultFlags = 0x800000;

// A question to the printer. Empty texts stand for the provider's own resource, utf-8 and English.
struct IPPQuery {
  std::string name;  // as in IPPProvider::GetValue
  bool forJob = false;
  std::string jobUri;
  std::string resourceUri;
  std::string charset;
  std::string language;
};

// creation.cpp makes it, device_checks.cpp asks whether there is a printer, authorization.cpp
// whether it takes the caller's credentials; value_queries.cpp reads it, job_listing.cpp looks for
// jobs, job_operations.cpp makes and cancels them, print_job.cpp sends documents, and
// status_polling.cpp asks meanwhile how they fare.
class IPPProviderImpl : public IPPProvider, public IDisposableImpl {
 public:
  // Null with a last error; null arguments leave that alone.
  static IPPProviderImpl* Create(Address* address, const char* resourceUri, bool secure,
                                 std::uint32_t flags);
  static IPPProviderImpl* Create2(Address* address, const wchar_t* printerUri, std::uint32_t flags);

  // Whether a TCP connection to the IP literal `host` succeeds; a name never does. `host` becomes
  // the text that was converted to the address. The port of an IPv4 address is 80 or else 631.
  static bool DeviceExists(std::wstring& host, std::wstring& port);
  // "USB001" at the end of a word, but not "USB000".
  static bool IsUsbPort(const wchar_t* text);

  IPPProviderImpl(Address* address, std::unique_ptr<IPPOperations> operations);
  ~IPPProviderImpl() override;

  std::uint32_t AddRef() override { return AddRefImpl(); }
  std::uint32_t AddRefConst() override { return AddRefImpl(); }
  std::uint32_t Dispose() override { return DisposeImpl(); }
  std::uint32_t Release() override { return DisposeImpl(); }
  const char* GetTypeName() override;

  HRESULT GetValue(const char* name, VARIANT* value) override;
  HRESULT GetIPPValue(const char* attributeName, bool forJob, VARIANT* value, const char* uri,
                      const char* resourceUri, std::uint32_t flags) override;
  HRESULT PrintUri(IPPRequestBase* request, IPPResponseBase* response) override;
  HRESULT SendURI(IPPRequestBase* request, IPPResponseBase* response) override;
  HRESULT CreateJob(IPPRequestBase* request, IPPResponseBase* response) override;
  HRESULT CancelJob(IPPRequestBase* request, IPPResponseBase* response) override;
  HRESULT PrintJob(IPPRequestBase* request, IPPResponseBase* response, const void* buffer,
                   std::int32_t length, bool chunked) override;
  HRESULT PrintJobWrite(IPPRequestBase* request, IPPResponseBase* response, const void* buffer,
                        std::int32_t length) override;
  void SetTimeouts(std::uint32_t connectMs, std::uint32_t sendMs, std::uint32_t receiveMs) override;
  HRESULT CheckAuthorization(HTTPRequest* httpRequest, IPPRequestBase* request) override;

  // The request's job, else the one being printed, else the first that the printer lists for the
  // request's user: its facts go into the set. Asks for ended jobs when `selectState` is true, else
  // for those that go on. 1 when there is none.
  virtual HRESULT GetJobs(IPPRequestBase* request, IPPResponseBase* response, bool selectState);
  // 0 when the job being printed has ended, which also is its print status from now on; 1 when it
  // goes on or cannot be seen.
  virtual HRESULT GetJobs(bool selectState);

  // The job being printed is cancelled, see Corvane::CancelPrintJob. Any thread.
  HRESULT CancelPrintJob(IPPResponseBase* response, std::uint32_t timeoutMs);

  // 1 the printer is idle and has room for a document, 0 it is not or has not, 2 it does not tell.
  int CheckForPrinterReadyState();
  // 0, or E_FAIL when the printer does not tell its state.
  HRESULT GetPrinterState(std::wstring* state, std::wstring* reasons);

  // What the two polling threads and the sender tell each other, see JobWatch.
  JobWatch& Watch() { return m_watch; }
  void SetPrintStatus() { m_watch.SetPrintStatus(); }
  std::uint32_t GetPrintStatus() const { return m_watch.GetPrintStatus(); }
  std::uint32_t GetbPrinteStatusThreadPoll() { return m_watch.GetbPrinteStatusThreadPoll(); }
  // No more polling of the printer, ever.
  void SetPrintReadyStatus() { m_watch.SetPrintReadyStatus(); }
  HANDLE GetPrintStatusEventHandle() const { return m_watch.GetPrintStatusEventHandle(); }
  HANDLE GetPrintReadyStatusEventHandle() const { return m_watch.GetPrintReadyStatusEventHandle(); }
  // Ends and joins the polling threads, which takes one exchange at most, and closes the events.
  void StopAllThreadsRunning() { m_watch.StopAllThreadsRunning(); }

  // The values of GetValue, in UTF-8; none for what the printer did not tell.
  std::vector<std::string> ValuesOf(const std::string& name) const;
  // The same asked of the printer now. E_FAIL when it cannot be reached or has none.
  HRESULT Query(const IPPQuery& query, std::vector<std::string>* values) const;
  // When the values of GetValue were read: 100 ns since 1601, UTC; 0 when no clock told.
  std::uint64_t FetchTime() const { return m_fetchTime; }

 private:
  static constexpr std::uint32_t kDefaultTimeoutMs = 30000;

  static constexpr std::uint32_t kNoLimit = ~std::uint32_t{0};
  class Sending;  // a document on its way, see print_job.cpp

  bool SetUris(const wchar_t* resourceUri, const wchar_t* printerUri);
  bool IsSecure() const;
  // A fresh exchange with the resource, the URI, the flags and the time-out of this provider, or
  // with `limitMs` where that is shorter.
  std::unique_ptr<IPPOperations> NewExchange(std::uint32_t limitMs = kNoLimit) const;
  // All values of the attribute with "," between them; empty when the printer did not tell it.
  static std::wstring JoinedValue(const IPPOperations& answer, std::string_view name);

  // GetJobs of the job at `uri`; of the one being printed when that is empty.
  HRESULT FindJob(IPPRequestBase* request, IPPResponseBase* response, bool selectState,
                  std::string_view uri, std::uint32_t limitMs = kNoLimit);
  HRESULT RunJobOperation(int operation, IPPRequestBase* request, IPPResponseBase* response,
                          bool secure, std::uint32_t limitMs = kNoLimit);
  HRESULT CancelAtPrinter(IPPRequestBase* request, IPPResponseBase* response,
                          std::uint32_t timeoutMs);

  const RefPtr<Address> m_address;
  const std::unique_ptr<IPPOperations> m_operations;  // holds the values of GetValue
  std::unique_ptr<IPPOperations> m_jobOperations;
  // Connecting, sending, receiving; the polling threads read them, too.
  std::atomic<std::uint32_t> m_timeouts[3] = {kDefaultTimeoutMs, kDefaultTimeoutMs,
                                              kDefaultTimeoutMs};
  std::wstring m_resourceUri;
  std::wstring m_printerUri;  // empty when the provider was made from a path
  std::uint64_t m_fetchTime = 0;

  JobWatch m_watch{this};
};

}  // namespace Corvane

#endif  // CORVANE_IPP_PROVIDER_IPP_PROVIDER_IMPL_H_
