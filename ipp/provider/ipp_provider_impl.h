// The IPP provider over a host's transport.
#ifndef CORVANE_IPP_PROVIDER_IPP_PROVIDER_IMPL_H_
#define CORVANE_IPP_PROVIDER_IPP_PROVIDER_IMPL_H_

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/critical_section.h"
#include "core/unique_handle.h"
#include "corvane/handles.h"
#include "corvane/ipp_provider.h"
#include "ipp/ipp_operations.h"
#include "ipp/provider/current_job.h"
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

// creation.cpp makes it, device_checks.cpp asks whether there is a printer, value_queries.cpp reads
// it, job_listing.cpp looks for jobs, job_operations.cpp makes and cancels them, print_job.cpp
// sends documents, status_polling.cpp watches meanwhile.
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

  // 1 the printer is idle and has room for a document, 0 it is not or has not, 2 it does not tell.
  int CheckForPrinterReadyState();
  // 0, or E_FAIL when the printer does not tell its state.
  HRESULT GetPrinterState(std::wstring* state, std::wstring* reasons);

  // What the two polling threads and the sender tell each other. Any thread.
  void SetPrintStatus();
  std::uint32_t GetPrintStatus();
  std::uint32_t GetbPrinteStatusThreadPoll();
  void SetPrintReadyStatus();  // no more polling of the printer, ever
  HANDLE GetPrintStatusEventHandle() const;
  HANDLE GetPrintReadyStatusEventHandle() const;
  // Milliseconds; less when the polling of the printer is to end.
  void PauseBetweenPolls(std::uint32_t milliseconds) const;
  // Ends and joins the polling threads, which takes one exchange at most, and closes the events.
  void StopAllThreadsRunning();

  // The values of GetValue, in UTF-8; none for what the printer did not tell.
  std::vector<std::string> ValuesOf(const std::string& name) const;
  // The same asked of the printer now. E_FAIL when it cannot be reached or has none.
  HRESULT Query(const IPPQuery& query, std::vector<std::string>* values) const;
  // When the values of GetValue were read: 100 ns since 1601, UTC; 0 when no clock told.
  std::uint64_t FetchTime() const { return m_fetchTime; }

 private:
  static constexpr std::uint32_t kDefaultTimeoutMs = 30000;

  // How something ended: a result, and what the last error is then.
  struct Outcome {
    HRESULT result = S_OK;
    DWORD error = 0;
  };
  enum class JobSearch { kNotFound, kFound, kUnknown };
  // How the printer has ended a job before its time.
  enum class DeviceEnd { kNone, kAborted, kCancelled };

  bool SetUris(const wchar_t* resourceUri, const wchar_t* printerUri);
  bool IsSecure() const;
  // A fresh exchange with the resource, the URI and the time-out of this provider.
  std::unique_ptr<IPPOperations> NewExchange() const;

  // GetJobs of the job at `uri`; of the one being printed when that is empty.
  HRESULT FindJob(IPPRequestBase* request, IPPResponseBase* response, bool selectState,
                  std::string_view uri);
  HRESULT RunJobOperation(int operation, IPPRequestBase* request, IPPResponseBase* response,
                          bool secure);

  Outcome BeginJob(IPPRequestBase* request, const void* buffer, std::int32_t length);
  Outcome PrintWhole(IPPRequestBase* request, IPPResponseBase* response);
  Outcome BeginChunks(IPPRequestBase* request, IPPResponseBase* response, std::int32_t length);
  Outcome AwaitIdlePrinter();
  Outcome AwaitRoomInSpool();
  Outcome SendPiece(IPPRequestBase* request, IPPResponseBase* response, const void* buffer,
                    std::int32_t length);
  Outcome SendLastChunk(IPPRequestBase* request, IPPResponseBase* response);
  Outcome ReadAnswer(HTTPResponse* answer, IPPRequestBase* request, IPPResponseBase* response);
  Outcome JudgeStatus(IPPResponseBase* response);
  Outcome AnswerIsLost(IPPRequestBase* request, IPPResponseBase* response, DWORD error);
  Outcome DocumentIsCut(IPPRequestBase* request, IPPResponseBase* response, DWORD error);
  Outcome Confirm(IPPRequestBase* request, IPPResponseBase* response);
  JobSearch LookUpJob(IPPRequestBase* request, IPPResponseBase* response, bool again);
  Outcome EndJob(Outcome outcome);

  void StartPolling();
  void StopPolling();
  void StartJobsThread();
  void ResumeJobsThread();
  void MarkJobEnded(DeviceEnd end);
  DeviceEnd EndAtDevice();

  const RefPtr<Address> m_address;
  const std::unique_ptr<IPPOperations> m_operations;  // holds the values of GetValue
  std::unique_ptr<IPPOperations> m_jobOperations;
  // Connecting, sending, receiving; the polling threads read them, too.
  std::atomic<std::uint32_t> m_timeouts[3] = {kDefaultTimeoutMs, kDefaultTimeoutMs,
                                              kDefaultTimeoutMs};
  std::wstring m_resourceUri;
  std::wstring m_printerUri;  // empty when the provider was made from a path
  std::uint64_t m_fetchTime = 0;

  CurrentJob m_currentJob;
  UniqueHandle m_jobsThread;
  UniqueHandle m_printerStatusThread;
  UniqueHandle m_printStatusEvent;  // the job has ended, or the threads must stop
  UniqueHandle m_printReadyEvent;   // the printer's spool has room
  UniqueHandle m_pollingEndEvent;   // set when m_pollPrinterStatus is not
  CriticalSection m_printStatusLock;
  std::uint32_t m_printStatus = 0;           // guarded by m_printStatusLock: the job has ended
  DeviceEnd m_deviceEnd = DeviceEnd::kNone;  // guarded by m_printStatusLock
  CriticalSection m_printerStatusLock;
  std::uint32_t m_pollPrinterStatus = 1;  // guarded by m_printerStatusLock
};

// The polling threads, whose argument is the provider. 0; 1 without a provider or its event.
unsigned __stdcall GetJobsPollingThread(void* provider);
unsigned __stdcall GetPrinterStatusPollingThread(void* provider);

}  // namespace Corvane

#endif  // CORVANE_IPP_PROVIDER_IPP_PROVIDER_IMPL_H_
