#include "tools/print/print_report.h"

#include <cstdio>

#include "corvane/error_codes.h"
#include "corvane/handles.h"
#include "corvane/http_response.h"
#include "tools/ipp/ipp_values.h"
#include "tools/options/device.h"
#include "tools/output/failure.h"
#include "tools/output/text.h"

namespace Corvane::Tool {
namespace {

constexpr std::uint32_t kCancelTimeoutMs = 3'000;  // somebody waits for the end

constexpr char kWantsAccount[] =
    "the printer wants an account, or another one: say --account, with ipps://";

// "IPP status 0x0501, server-error-operation-not-supported", or empty.
std::string StatusText(std::uint32_t error) {
  const std::string name = ErrorStatusName(static_cast<std::int32_t>(error));
  if (name.empty()) return {};
  char text[32];
  std::snprintf(text, sizeof(text), "IPP status 0x%04X, ", error);
  return text + name;
}

// What the host says of an exchange; else the code alone.
std::string ExchangeText(std::uint32_t error, Address& address) {
  constexpr char kNoPrinter[] = "the device answers, but not as an IPP printer";
  if (error == kHttpOk) return kNoPrinter;
  if (error == kErrorOutOfMemory) return "out of memory";
  if (error == kIPPVersion1) return VersionText("1.x");
  if (std::string failure = LastFailureOf(address); !failure.empty()) return failure;
  return error == 0 ? kNoPrinter : "error " + std::to_string(error);
}

// The state in the words of RFC 8011, 5.3.7: "pending-held" for "Pending_held".
std::string JobStateText(IPPResponseBase& response) {
  const char* const state = response.GetJobState();
  std::string text = state ? state : "";
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
    if (c == '_') c = '-';
  }
  return EscapeText(text);
}

std::string JobReasonsText(IPPResponseBase& response) {
  const char* const reasons = response.GetJobStateReasons();
  return reasons && *reasons ? " (" + EscapeText(std::string_view(reasons)) + ")" : std::string();
}

std::string ReportedJob(IPPResponseBase& response) {
  const std::int32_t id = response.GetJobID();
  return id > 0 ? "job " + std::to_string(id) : "a job without a number";
}

std::string FailureText(std::uint32_t error, IPPResponseBase& response, Address& address) {
  switch (error) {
    case kIPPDocumentEmpty:
      return "the document is empty";
    case kIPPPrinterNotReady:
      return "the printer was not idle, or had no room, for an hour";
    case kIPPJobAborted:
      return "the printer has aborted the job" + JobReasonsText(response);
    case kIPPNotAuthenticated:
    case kIPPNotAuthorized:
      return kWantsAccount;
    case kIPPPrinterStateUnknown:
      return "the printer does not tell its state; nothing was sent: " + ExchangeText(0, address);
    case kIPPPrinterBusy:
      return "the printer is busy and has not taken the job";
    default:
      break;
  }
  const std::string status = StatusText(error);
  return status.empty() ? ExchangeText(error, address) : "the printer refuses the job: " + status;
}

}  // namespace

Cancellation Cancel(IPPProvider& provider, Address& address) {
  const RefPtr<IPPResponseBase> response(CreateIPPResponse());
  if (!response) return {CancelResult::kUnknown, "out of memory"};
  SetLastError(0);
  const HRESULT result = CancelPrintJob(&provider, response.Get(), kCancelTimeoutMs);
  const std::uint32_t error = result == E_OUTOFMEMORY ? kErrorOutOfMemory : GetLastError();
  if (result == S_FALSE) return {CancelResult::kNoJob, "the document has ended"};
  const std::string job = ReportedJob(*response.Get());
  if (result == S_OK) return {CancelResult::kCancelled, "the printer has cancelled " + job};
  if (error == kIPPJobNotListed) return {CancelResult::kNoJob, "the printer lists no job of it"};
  const std::string status = StatusText(error);
  return {CancelResult::kUnknown, (response->GetJobID() > 0 ? "the printer does not cancel " + job
                                                            : "the printer lists no jobs") +
                                      ": " +
                                      (status.empty() ? ExchangeText(error, address) : status)};
}

std::string CancelledText(const Cancellation& cancellation) {
  return "cancelled: " + cancellation.text +
         (cancellation.result == CancelResult::kUnknown ? "; what was not sent yet is dropped"
                                                        : "");
}

std::string PerhapsPrintedText(const Cancellation& cancellation) {
  return "perhaps printed: the printer may have the whole document; " + cancellation.text;
}

Failure CreationFailure(std::uint32_t error, Address& address) {
  const std::string device = EscapeText(std::wstring_view(address.GetDisplayName()));
  switch (error) {
    case kIPPNotOnDevice:
      return Failure(kNotPrinted,
                     device + " has no IPP printer: it answers at port 80, but not at 631");
    case kIPPDeviceSilent:
      return Failure(kNotPrinted, device + " does not answer, neither at port 631 nor at 80");
    case kIPPPathTooShort:
    case kIPPNoResourcePath:
      return Failure(kBadUsage, "--uri: the printer's path is missing or too short");
    case kIPPInvalidArgument:
      return Failure(kBadUsage, "--uri: no printer URI");
    case kIPPUnknownPort:
      return Failure(kBadUsage, "--uri: the port of a printer is 631 or 443");
    case kIPPNotAuthenticated:
    case kIPPNotAuthorized:
      return Failure(kNotPrinted, std::string("not printed: ") + kWantsAccount);
    default:
      return Failure(kNotPrinted, "not printed: " + ExchangeText(error, address));
  }
}

Failure PrintFailure(std::uint32_t error, IPPResponseBase& response, Address& address) {
  if (error == kIPPPerhapsPrinted) {
    return Failure(kPerhapsPrinted,
                   "perhaps printed: the printer has the whole document, but tells nothing more of "
                   "it\nprinting it again may print it twice");
  }
  return Failure(kNotPrinted, "not printed: " + FailureText(error, response, address));
}

std::string JobText(IPPResponseBase& response) {
  const std::string state = JobStateText(response);
  return ReportedJob(response) + (state.empty() ? "" : ", " + state);
}

std::string JobLine(IPPResponseBase& response) {
  const auto orDash = [](std::string text) { return text.empty() ? "-" : text; };
  const char* const uri = response.GetJobURI();
  return (response.GetJobID() > 0 ? std::to_string(response.GetJobID()) : "-") + '\t' +
         orDash(JobStateText(response)) + '\t' +
         orDash(EscapeText(std::string_view(uri ? uri : ""))) + '\n';
}

}  // namespace Corvane::Tool
