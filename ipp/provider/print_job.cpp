// A document on its way to the printer, and the one outcome that it has.
#include <string_view>

#include "base/decimal.h"
#include "core/text.h"
#include "core/trace.h"
#include "ipp/provider/ipp_provider_impl.h"
#include "ipp/wire/codes.h"
#include "platform/system.h"

namespace Corvane {
namespace {

constexpr wchar_t kPrintJob[] = L"Corvane::IPPProviderImpl::PrintJob";
constexpr wchar_t kPrintJobWrite[] = L"Corvane::IPPProviderImpl::PrintJobWrite";

// The system's own codes for these.
static_assert(kIPPInvalidArgument == ERROR_INVALID_PARAMETER &&
              kIPPJobAborted == ERROR_OPERATION_ABORTED && kIPPJobCancelled == ERROR_CANCELLED &&
              kIPPPrinterNotReady == ERROR_TIMEOUT && kIPPDocumentEmpty == ERROR_INCORRECT_SIZE &&
              kIPPUnknownPort == ERROR_UNKNOWN_PORT);

constexpr DWORD kRetryMs = 2000;
// A printer that stays busy, or full, so long is not going to print this.
constexpr DWORD kMaxWaitMs = 3'600'000;
// How often a document in one piece is sent to a printer that is busy.
constexpr int kMaxBusyAttempts = 10;

// How something ended: a result, and what the last error is then.
struct Outcome {
  HRESULT result = S_OK;
  DWORD error = 0;

  bool IsGood() const { return result == S_OK; }
};
constexpr Outcome kGood;
constexpr Outcome kCancelled{S_DEVICECANCELED, kIPPJobCancelled};

Outcome PrintJobFailure(DWORD error) { return {E_FAIL, error}; }

bool PrintJobIsAborted(IPPResponseBase* response) {
  return response->GetJobState() && std::string_view(response->GetJobState()) == "Aborted";
}

// A printer may refuse before it has the document: then this is the HTTP status.
DWORD ErrorOfChunk() {
  const DWORD error = GetLastError();
  return error == kHttpUnauthorized ? kIPPNotAuthenticated : error;
}

HRESULT LeavePrintJob(const TraceScope& trace, const wchar_t* operation, const Outcome& outcome) {
  trace.Message(kTraceInfo, L"%ls exits with result 0x%08X", operation, outcome.result);
  if (!outcome.IsGood()) SetLastError(outcome.error);
  return outcome.result;
}

}  // namespace

// One call of the sender's, with its sets.
class IPPProviderImpl::Sending {
 public:
  Sending(IPPProviderImpl* provider, IPPRequestBase* request, IPPResponseBase* response)
      : m_provider(*provider),
        m_watch(provider->m_watch),
        m_operations(provider->m_jobOperations),
        m_request(request),
        m_response(response) {}

  Outcome Print(const void* buffer, std::int32_t length, bool chunked) {
    if (length == 0) return PrintJobFailure(kIPPDocumentEmpty);
    if (!m_request || !m_response || !buffer || length < 0)
      return PrintJobFailure(kIPPInvalidArgument);
    if (const Outcome begun = Begin(buffer, length); !begun.IsGood()) {
      m_operations.reset();
      return begun;
    }
    const Outcome outcome = chunked ? BeginChunks(length) : SendWhole();
    return outcome.IsGood() && chunked ? kGood : End(outcome);
  }

  Outcome Write(const void* buffer, std::int32_t length) {
    const bool isPiece = length == 0 || (length > 0 && buffer);
    const bool isSending = m_operations && m_operations->IsSendingChunks();
    if (!m_request || !m_response || !isPiece || !isSending)
      return PrintJobFailure(kIPPInvalidArgument);
    if (length > 0 && !m_watch.AwaitRoom(kMaxWaitMs))
      return End(PrintJobFailure(kIPPPrinterNotReady));
    if (!m_watch.BeginSending()) return End(kCancelled);
    const bool isEnded = m_watch.EndAtDevice() != JobWatch::DeviceEnd::kNone;
    if (isEnded) Trace(kTraceInfo, kPrintJobWrite, L"PrintJobWrite Cancelled from Device end");
    if (isEnded || length == 0) return End(SendLastChunk());
    const Outcome outcome = SendPiece(buffer, length);
    return outcome.IsGood() ? outcome : End(outcome);
  }

 private:
  enum class JobSearch { kNotFound, kFound, kUnknown };

  // What an earlier document left goes: a half-sent one is dropped with its connection.
  Outcome Begin(const void* buffer, std::int32_t length) {
    m_watch.End();
    m_operations = m_provider.NewExchange();
    if (m_provider.m_printerUri.empty()) return PrintJobFailure(kIPPNoPrinterUri);
    if (const HRESULT kept = m_operations->SetPrinterFileBufferContent(buffer, length);
        kept != S_OK) {
      return PrintJobFailure(kept == E_OUTOFMEMORY ? ERROR_OUTOFMEMORY : kIPPInvalidArgument);
    }
    const std::wstring authorization = m_request->GetAuthorizationHeader();
    if (!authorization.empty()) {
      m_request->AddExtraHTTPHeader(L"Authorization", authorization.c_str());
    }
    m_provider.m_operations->SetRequestedUserName(m_request->GetRequestingUserName());
    m_watch.Begin(m_request);
    return kGood;
  }

  Outcome SendWhole() {
    for (int attempt = 1; m_watch.BeginSending(); ++attempt) {
      HTTPResponse* answer = nullptr;
      const HRESULT sent = m_operations->SendPrintJobRequest(&answer, m_request, false, 0, nullptr,
                                                             m_provider.IsSecure());
      if (sent == S_FALSE) return AnswerIsLost(GetLastError());
      if (sent == IPPStatus::kNotAuthenticated) return PrintJobFailure(kIPPNotAuthenticated);
      if (sent != S_OK) return PrintJobFailure(GetLastError());
      const Outcome outcome = ReadAnswer(answer);
      if (outcome.IsGood()) return Confirm();
      if (outcome.error != kIPPPrinterBusy || attempt == kMaxBusyAttempts) return outcome;
      m_watch.Pause(kRetryMs);
    }
    return kCancelled;
  }

  Outcome BeginChunks(std::int32_t length) {
    if (const Outcome idle = AwaitIdlePrinter(); !idle.IsGood()) return idle;
    m_watch.OpenReadyEvent();
    if (!m_watch.BeginSending()) return kCancelled;
    HTTPResponse* answer = nullptr;
    if (FAILED(SendChunk(&answer, length))) {
      const DWORD error = ErrorOfChunk();
      const Outcome refused = JudgeStatus();
      return refused.IsGood() ? PrintJobFailure(error) : refused;
    }
    m_watch.StartThreads();
    return kGood;
  }

  Outcome AwaitIdlePrinter() {
    for (DWORD waited = 0; !m_watch.IsCancelled(); waited += kRetryMs) {
      const int ready = m_provider.CheckForPrinterReadyState();
      if (ready == 2) return PrintJobFailure(kIPPPrinterStateUnknown);
      if (ready == 1) break;
      if (waited >= kMaxWaitMs) return PrintJobFailure(kIPPPrinterNotReady);
      m_watch.Pause(kRetryMs);
    }
    return kGood;
  }

  HRESULT SendChunk(HTTPResponse** answer, std::int32_t length) {
    return m_operations->SendPrintJobRequest(answer, m_request, true, length, m_watch.ReadyEvent(),
                                             m_provider.IsSecure());
  }

  Outcome SendPiece(const void* buffer, std::int32_t length) {
    if (m_operations->SetPrinterFileBufferContent(buffer, length) != S_OK) {
      return PrintJobFailure(ERROR_OUTOFMEMORY);
    }
    HTTPResponse* answer = nullptr;
    if (SUCCEEDED(SendChunk(&answer, length))) return kGood;
    const DWORD error = ErrorOfChunk();
    Trace(kTraceInfo, kPrintJobWrite, L"Failed while sending chunk data");
    return DocumentIsCut(error);
  }

  Outcome SendLastChunk() {
    HTTPResponse* answer = nullptr;
    const HRESULT sent = SendChunk(&answer, 0);
    if (sent == S_OK) return ReadAnswer(answer);
    const DWORD error = ErrorOfChunk();
    Trace(kTraceInfo, kPrintJobWrite, L"Failed while sending last chunk data");
    if (sent == S_FALSE) return AnswerIsLost(error);
    if (sent == IPPStatus::kNotAuthenticated) return PrintJobFailure(kIPPNotAuthenticated);
    return DocumentIsCut(error);
  }

  // The printer has not got every byte, and will not.
  Outcome DocumentIsCut(DWORD error) {
    m_watch.StopThreads();
    const Outcome refused = JudgeStatus();
    if (!refused.IsGood()) return refused;
    const bool found = LookUpJob(false) == JobSearch::kFound;
    return {found && IsCancelled(m_response) ? S_DEVICECANCELED : E_FAIL, error};
  }

  // The printer has every byte.
  Outcome ReadAnswer(HTTPResponse* answer) {
    if (FAILED(m_operations->ParseIPPResponse(answer, nullptr, IPPOperation::kPrintJob))) {
      return AnswerIsLost(GetLastError());
    }
    const Outcome outcome = JudgeStatus();
    const std::int32_t id = m_response->GetJobID();
    if (outcome.IsGood() && id > 0) m_watch.Job().Identify(id);
    return outcome;
  }

  // Of the printer's answer, when there is one.
  Outcome JudgeStatus() {
    const std::vector<std::string> statuses = m_operations->ValuesOf("status-code");
    if (statuses.empty()) return kGood;
    m_operations->FormResponseStructure(m_response);
    const std::int32_t status = LeadingInt32(statuses.front());
    if (status <= IPPStatus::kLastSuccess) return kGood;
    if (status == IPPStatus::kServerErrorBusy) {
      Trace(kTraceInfo, kPrintJob, L"server-error-busy..Please restart the job");
      return PrintJobFailure(kIPPPrinterBusy);
    }
    if (status == IPPStatus::kServerErrorJobCanceled) {
      Trace(kTraceInfo, kPrintJob, L"server-error-job-canceled");
      return {S_DEVICECANCELED, static_cast<DWORD>(status)};
    }
    Trace(kTraceInfo, kPrintJob, L"Failed: some error occured IPP status code=%ls",
          BstrFromUtf8(statuses.front()).Get());
    return PrintJobFailure(static_cast<DWORD>(status));
  }

  // The printer has every byte, and what it made of them is to be found out.
  Outcome AnswerIsLost(DWORD error) {
    m_watch.StopThreads();
    Trace(kTraceInfo, kPrintJobWrite, L"httpBase->GetResponse() failed try GetJobs");
    JobSearch search = LookUpJob(false);
    if (search != JobSearch::kFound) {
      m_watch.Pause(kRetryMs);
      search = LookUpJob(true);
    }
    if (search == JobSearch::kUnknown) return PrintJobFailure(kIPPPerhapsPrinted);
    if (search == JobSearch::kNotFound || PrintJobIsAborted(m_response))
      return PrintJobFailure(error);
    return {IsCancelled(m_response) ? S_DEVICECANCELED : S_OK, error};
  }

  // The printer has taken the document, and may have ended its job already. One that it does not
  // list is printed all the same.
  Outcome Confirm() {
    m_operations->EndExchange();
    const char* const told = m_response->GetSuccessStatus();
    const std::string status = told ? told : "";
    JobSearch search = LookUpJob(false);
    if (search == JobSearch::kNotFound) {
      m_watch.Pause(kRetryMs);
      search = LookUpJob(true);
    }
    if (search != JobSearch::kFound) return kGood;
    m_response->SetSuccess(status.c_str());  // of the document, not of the list
    if (IsCancelled(m_response)) return kCancelled;
    return PrintJobIsAborted(m_response) ? PrintJobFailure(kIPPJobAborted) : kGood;
  }

  // Among the jobs that go on, then among those that have ended.
  JobSearch LookUpJob(bool again) {
    const HRESULT going = m_provider.FindJob(m_request, m_response, false, {});
    if (going == S_OK) return JobSearch::kFound;
    Trace(
        kTraceInfo, kPrintJob,
        again ? L"GetJobs fails again - not completed job" : L"GetJobs fails - not completed job");
    if (going != S_FALSE) return JobSearch::kUnknown;
    const HRESULT ended = m_provider.FindJob(m_request, m_response, true, {});
    if (ended == S_OK) return JobSearch::kFound;
    if (again) Trace(kTraceInfo, kPrintJob, L"GetJobs fails again - completed job");
    return ended == S_FALSE ? JobSearch::kNotFound : JobSearch::kUnknown;
  }

  // Every job ends here: its threads, its events and what is left of its request. That goes behind
  // the cancellation, or the printer might print what it has.
  Outcome End(Outcome outcome) {
    m_watch.End();
    m_operations.reset();
    const JobWatch::DeviceEnd end = m_watch.EndAtDevice();
    if (end == JobWatch::DeviceEnd::kCancelled) {
      outcome = kCancelled;
    } else if (end == JobWatch::DeviceEnd::kAborted && outcome.IsGood()) {
      outcome = PrintJobFailure(kIPPJobAborted);
    } else if (m_watch.IsCancelled() && !outcome.IsGood() && outcome.error != kIPPPerhapsPrinted) {
      outcome = kCancelled;
    }
    if (outcome.result == S_DEVICECANCELED) {
      Trace(kTraceInfo, kPrintJobWrite, L"hr is set to S_DEVICECANCELED");
    }
    return outcome;
  }

  IPPProviderImpl& m_provider;
  JobWatch& m_watch;
  std::unique_ptr<IPPOperations>& m_operations;
  IPPRequestBase* const m_request;
  IPPResponseBase* const m_response;
};

HRESULT IPPProviderImpl::PrintJob(IPPRequestBase* request, IPPResponseBase* response,
                                  const void* buffer, std::int32_t length, bool chunked) {
  TraceScope trace(kPrintJob);
  return LeavePrintJob(trace, L"PrintJob",
                       Sending(this, request, response).Print(buffer, length, chunked));
}

HRESULT IPPProviderImpl::PrintJobWrite(IPPRequestBase* request, IPPResponseBase* response,
                                       const void* buffer, std::int32_t length) {
  TraceScope trace(kPrintJobWrite);
  return LeavePrintJob(trace, L"PrintJobWrite",
                       Sending(this, request, response).Write(buffer, length));
}

}  // namespace Corvane
