// A document on its way to the printer, and the one outcome that it has.
#include <cstdlib>
#include <string_view>

#include "core/text.h"
#include "core/trace.h"
#include "ipp/ipp_codes.h"
#include "ipp/provider/ipp_provider_impl.h"
#include "platform/system.h"

namespace Corvane {
namespace {

constexpr wchar_t kPrintJob[] = L"Corvane::IPPProviderImpl::PrintJob";
constexpr wchar_t kPrintJobWrite[] = L"Corvane::IPPProviderImpl::PrintJobWrite";

constexpr DWORD kRefusedPrinterUri = 1280;
constexpr DWORD kHttpUnauthorized = 401;
constexpr DWORD kRetryMs = 2000;
// A printer that stays busy, or full, so long is not going to print this.
constexpr DWORD kMaxWaitMs = 3'600'000;
// How often a document in one piece is sent to a printer that is busy.
constexpr int kMaxBusyAttempts = 10;

constexpr long kServerErrorBusy = 1287;
constexpr long kServerErrorJobCanceled = 1288;
constexpr long kLastSuccess = 0xFF;  // RFC 8011, appendix B.1.2

bool IsIn(IPPResponseBase* response, std::string_view state) {
  return response->GetJobState() && response->GetJobState() == state;
}

bool IsCancelled(IPPResponseBase* response) {
  const char* const reasons = response->GetJobStateReasons();
  return IsIn(response, "Canceled") ||
         (reasons && std::string_view(reasons).find("canceled") != std::string_view::npos);
}

// A printer may refuse before it has the document: then this is the HTTP status.
DWORD ErrorOfChunk() {
  const DWORD error = GetLastError();
  return error == kHttpUnauthorized ? static_cast<DWORD>(IPPStatus::kNotAuthenticated) : error;
}

}  // namespace

HRESULT IPPProviderImpl::PrintJob(IPPRequestBase* request, IPPResponseBase* response,
                                  const void* buffer, std::int32_t length, bool chunked) {
  TraceScope trace(L"Corvane::IPPProviderImpl::PrintJob");
  Outcome outcome;
  if (length == 0) {
    outcome = {E_FAIL, ERROR_INCORRECT_SIZE};
  } else if (!request || !response || !buffer || length < 0) {
    outcome = {E_FAIL, ERROR_INVALID_PARAMETER};
  } else {
    outcome = BeginJob(request, buffer, length);
    if (outcome.result == S_OK) {
      outcome = chunked ? BeginChunks(request, response, length) : PrintWhole(request, response);
    }
    if (outcome.result != S_OK || !chunked) outcome = EndJob(outcome);
  }
  trace.Message(kTraceInfo, L"PrintJob exits with result 0x%08X", outcome.result);
  if (outcome.result != S_OK) SetLastError(outcome.error);
  return outcome.result;
}

// What an earlier document left goes: a half-sent one is dropped with its connection.
IPPProviderImpl::Outcome IPPProviderImpl::BeginJob(IPPRequestBase* request, const void* buffer,
                                                   std::int32_t length) {
  StopPolling();
  m_jobOperations = NewExchange();
  if (m_printerUri.empty()) return {E_FAIL, kRefusedPrinterUri};
  m_jobOperations->SetConnectionFlags(m_operations->ConnectionFlags());
  if (const HRESULT kept = m_jobOperations->SetPrinterFileBufferContent(buffer, length);
      kept != S_OK) {
    return {E_FAIL, static_cast<DWORD>(kept == E_OUTOFMEMORY ? ERROR_OUTOFMEMORY
                                                             : ERROR_INVALID_PARAMETER)};
  }
  const std::wstring authorization = request->GetAuthorizationHeader();
  if (!authorization.empty()) {
    request->AddExtraHTTPHeader(L"Authorization", authorization.c_str());
  }
  m_operations->SetRequestedUserName(request->GetRequestingUserName());
  if (!m_pollingEndEvent) {
    m_pollingEndEvent = UniqueHandle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
  }
  m_currentJob.Begin(request->GetRequestingUserName(), request->GetUsername(),
                     request->GetJobName());
  const std::lock_guard lock(m_printStatusLock);
  m_printStatus = 0;
  m_deviceEnd = DeviceEnd::kNone;
  return {};
}

IPPProviderImpl::Outcome IPPProviderImpl::PrintWhole(IPPRequestBase* request,
                                                     IPPResponseBase* response) {
  for (int attempt = 1;; ++attempt) {
    HTTPResponse* answer = nullptr;
    const HRESULT sent =
        m_jobOperations->SendPrintJobRequest(&answer, request, false, 0, nullptr, IsSecure());
    if (sent == S_FALSE) return AnswerIsLost(request, response, GetLastError());
    if (sent == IPPStatus::kNotAuthenticated) return {E_FAIL, IPPStatus::kNotAuthenticated};
    if (sent != S_OK) return {E_FAIL, GetLastError()};
    const Outcome outcome = ReadAnswer(answer, request, response);
    if (outcome.result == S_OK) return Confirm(request, response);
    if (outcome.error != kIPPPrinterBusy || attempt == kMaxBusyAttempts) return outcome;
    Sleep(kRetryMs);
  }
}

IPPProviderImpl::Outcome IPPProviderImpl::BeginChunks(IPPRequestBase* request,
                                                      IPPResponseBase* response,
                                                      std::int32_t length) {
  if (const Outcome idle = AwaitIdlePrinter(); idle.result != S_OK) return idle;
  m_printReadyEvent = UniqueHandle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
  if (m_printReadyEvent) SetEvent(m_printReadyEvent.Get());
  HTTPResponse* answer = nullptr;
  if (FAILED(m_jobOperations->SendPrintJobRequest(&answer, request, true, length,
                                                  m_printReadyEvent.Get(), IsSecure()))) {
    const DWORD error = ErrorOfChunk();
    const Outcome refused = JudgeStatus(response);
    return refused.result == S_OK ? Outcome{E_FAIL, error} : refused;
  }
  StartPolling();
  return {};
}

IPPProviderImpl::Outcome IPPProviderImpl::AwaitIdlePrinter() {
  for (DWORD waited = 0;; waited += kRetryMs) {
    switch (CheckForPrinterReadyState()) {
      case 1:
        return {};
      case 2:
        return {E_FAIL, kIPPPrinterStateUnknown};
      default:
        if (waited >= kMaxWaitMs) return {E_FAIL, ERROR_TIMEOUT};
        Sleep(kRetryMs);
    }
  }
}

HRESULT IPPProviderImpl::PrintJobWrite(IPPRequestBase* request, IPPResponseBase* response,
                                       const void* buffer, std::int32_t length) {
  TraceScope trace(kPrintJobWrite);
  Outcome outcome;
  const bool isPiece = length == 0 || (length > 0 && buffer);
  const bool isSending = m_jobOperations && m_jobOperations->IsSendingChunks();
  if (!request || !response || !isPiece || !isSending) {
    outcome = {E_FAIL, ERROR_INVALID_PARAMETER};
  } else {
    bool last = length == 0;
    if (!last) outcome = AwaitRoomInSpool();
    if (EndAtDevice() != DeviceEnd::kNone) {
      trace.Message(kTraceInfo, L"PrintJobWrite Cancelled from Device end");
      last = true;
    }
    if (outcome.result == S_OK) {
      outcome =
          last ? SendLastChunk(request, response) : SendPiece(request, response, buffer, length);
    }
    if (last || outcome.result != S_OK) outcome = EndJob(outcome);
  }
  trace.Message(kTraceInfo, L"PrintJobWrite exits with result 0x%08X", outcome.result);
  if (outcome.result != S_OK) SetLastError(outcome.error);
  return outcome.result;
}

// Good when the sender may go on, be it that nobody can tell any more whether the spool is full.
IPPProviderImpl::Outcome IPPProviderImpl::AwaitRoomInSpool() {
  constexpr DWORD kSliceMs = 200;
  if (!m_printReadyEvent || !m_printerStatusThread) return {};
  const HANDLE objects[] = {m_printReadyEvent.Get(), m_printerStatusThread.Get()};
  for (DWORD waited = 0; EndAtDevice() == DeviceEnd::kNone; waited += kSliceMs) {
    ResumeJobsThread();
    if (WaitForMultipleObjects(2, objects, FALSE, kSliceMs) != WAIT_TIMEOUT) break;
    if (waited >= kMaxWaitMs) return {E_FAIL, ERROR_TIMEOUT};
  }
  return {};
}

IPPProviderImpl::Outcome IPPProviderImpl::SendPiece(IPPRequestBase* request,
                                                    IPPResponseBase* response, const void* buffer,
                                                    std::int32_t length) {
  if (const HRESULT kept = m_jobOperations->SetPrinterFileBufferContent(buffer, length);
      kept != S_OK) {
    return {E_FAIL, ERROR_OUTOFMEMORY};
  }
  HTTPResponse* answer = nullptr;
  if (SUCCEEDED(m_jobOperations->SendPrintJobRequest(&answer, request, true, length,
                                                     m_printReadyEvent.Get(), IsSecure()))) {
    return {};
  }
  const DWORD error = ErrorOfChunk();
  Trace(kTraceInfo, kPrintJobWrite, L"Failed while sending chunk data");
  return DocumentIsCut(request, response, error);
}

IPPProviderImpl::Outcome IPPProviderImpl::SendLastChunk(IPPRequestBase* request,
                                                        IPPResponseBase* response) {
  HTTPResponse* answer = nullptr;
  const HRESULT sent = m_jobOperations->SendPrintJobRequest(&answer, request, true, 0,
                                                            m_printReadyEvent.Get(), IsSecure());
  if (sent == S_OK) return ReadAnswer(answer, request, response);
  const DWORD error = ErrorOfChunk();
  Trace(kTraceInfo, kPrintJobWrite, L"Failed while sending last chunk data");
  if (sent == S_FALSE) return AnswerIsLost(request, response, error);
  if (sent == IPPStatus::kNotAuthenticated) return {E_FAIL, IPPStatus::kNotAuthenticated};
  return DocumentIsCut(request, response, error);
}

// The printer has not got every byte, and will not.
IPPProviderImpl::Outcome IPPProviderImpl::DocumentIsCut(IPPRequestBase* request,
                                                        IPPResponseBase* response, DWORD error) {
  StopPolling();
  const Outcome refused = JudgeStatus(response);
  if (refused.result != S_OK) return refused;
  const bool found = LookUpJob(request, response, false) == JobSearch::kFound;
  return {found && IsCancelled(response) ? S_DEVICECANCELED : E_FAIL, error};
}

// The printer has every byte.
IPPProviderImpl::Outcome IPPProviderImpl::ReadAnswer(HTTPResponse* answer, IPPRequestBase* request,
                                                     IPPResponseBase* response) {
  const bool isRead =
      SUCCEEDED(m_jobOperations->ParseIPPResponse(answer, nullptr, IPPOperation::kPrintJob));
  if (!isRead) return AnswerIsLost(request, response, GetLastError());
  const Outcome outcome = JudgeStatus(response);
  if (outcome.result == S_OK && response->GetJobID() > 0) {
    m_currentJob.Identify(response->GetJobID());
  }
  return outcome;
}

// Of the printer's answer, when there is one.
IPPProviderImpl::Outcome IPPProviderImpl::JudgeStatus(IPPResponseBase* response) {
  const std::vector<std::string> statuses = m_jobOperations->ValuesOf("status-code");
  if (statuses.empty()) return {};
  m_jobOperations->FormResponseStructure(response);
  const long status = std::strtol(statuses.front().c_str(), nullptr, 10);
  if (status <= kLastSuccess) return {};
  if (status == kServerErrorBusy) {
    Trace(kTraceInfo, kPrintJob, L"server-error-busy..Please restart the job");
    return {E_FAIL, kIPPPrinterBusy};
  }
  if (status == kServerErrorJobCanceled) {
    Trace(kTraceInfo, kPrintJob, L"server-error-job-canceled");
    return {S_DEVICECANCELED, static_cast<DWORD>(status)};
  }
  Trace(kTraceInfo, kPrintJob, L"Failed: some error occured IPP status code=%ls",
        BstrFromUtf8(statuses.front()).Get());
  return {E_FAIL, static_cast<DWORD>(status)};
}

// The printer has every byte, and what it made of them is to be found out.
IPPProviderImpl::Outcome IPPProviderImpl::AnswerIsLost(IPPRequestBase* request,
                                                       IPPResponseBase* response, DWORD error) {
  StopPolling();
  Trace(kTraceInfo, kPrintJobWrite, L"httpBase->GetResponse() failed try GetJobs");
  JobSearch search = LookUpJob(request, response, false);
  if (search != JobSearch::kFound) {
    Sleep(kRetryMs);
    search = LookUpJob(request, response, true);
  }
  if (search == JobSearch::kUnknown) return {E_FAIL, kIPPPerhapsPrinted};
  if (search == JobSearch::kNotFound || IsIn(response, "Aborted")) return {E_FAIL, error};
  return {IsCancelled(response) ? S_DEVICECANCELED : S_OK, error};
}

// The printer has taken the document, and may have ended its job already. One that it does not list
// is printed all the same.
IPPProviderImpl::Outcome IPPProviderImpl::Confirm(IPPRequestBase* request,
                                                  IPPResponseBase* response) {
  m_jobOperations->EndExchange();
  const char* const told = response->GetSuccessStatus();
  const std::string status = told ? told : "";
  JobSearch search = LookUpJob(request, response, false);
  if (search == JobSearch::kNotFound) {
    Sleep(kRetryMs);
    search = LookUpJob(request, response, true);
  }
  if (search != JobSearch::kFound) return {};
  response->SetSuccess(status.c_str());  // of the document, not of the list
  if (IsCancelled(response)) return {S_DEVICECANCELED, ERROR_CANCELLED};
  if (IsIn(response, "Aborted")) return {E_FAIL, ERROR_OPERATION_ABORTED};
  return {};
}

// Among the jobs that go on, then among those that have ended.
IPPProviderImpl::JobSearch IPPProviderImpl::LookUpJob(IPPRequestBase* request,
                                                      IPPResponseBase* response, bool again) {
  const HRESULT going = FindJob(request, response, false, {});
  if (going == S_OK) return JobSearch::kFound;
  Trace(kTraceInfo, kPrintJob,
        again ? L"GetJobs fails again - not completed job" : L"GetJobs fails - not completed job");
  if (going != S_FALSE) return JobSearch::kUnknown;
  const HRESULT ended = FindJob(request, response, true, {});
  if (ended == S_OK) return JobSearch::kFound;
  if (again) Trace(kTraceInfo, kPrintJob, L"GetJobs fails again - completed job");
  return ended == S_FALSE ? JobSearch::kNotFound : JobSearch::kUnknown;
}

// Every job ends here: its threads, its events and what is left of its request.
IPPProviderImpl::Outcome IPPProviderImpl::EndJob(Outcome outcome) {
  StopPolling();
  m_jobOperations.reset();
  const DeviceEnd end = EndAtDevice();
  if (end == DeviceEnd::kCancelled) {
    outcome = {S_DEVICECANCELED, ERROR_CANCELLED};
  } else if (end == DeviceEnd::kAborted && outcome.result == S_OK) {
    outcome = {E_FAIL, ERROR_OPERATION_ABORTED};
  }
  if (outcome.result == S_DEVICECANCELED) {
    Trace(kTraceInfo, kPrintJobWrite, L"hr is set to S_DEVICECANCELED");
  }
  return outcome;
}

}  // namespace Corvane
