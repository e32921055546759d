// The IPP provider: a printer that speaks the Internet Printing Protocol (RFC 8010, RFC 8011).
#ifndef CORVANE_IPP_PROVIDER_H_
#define CORVANE_IPP_PROVIDER_H_

#include <cstdint>

#include "corvane/address.h"
#include "corvane/disposable.h"
#include "corvane/ipp_request.h"
#include "corvane/ipp_response.h"

namespace Corvane {

// What the thread's last error tells of a creation that gave null; besides these, what the exchange
// left (see GetIPPValue).
constexpr std::uint32_t kIPPNotOnDevice = 0x20000001;     // port 80 answers, 631 does not
constexpr std::uint32_t kIPPDeviceSilent = 0x20000002;    // neither does
constexpr std::uint32_t kIPPPathTooShort = 0x20000003;    // of a printer URI: below 4 characters
constexpr std::uint32_t kIPPNoResourcePath = 0x20000004;  // an empty path or resource URI
constexpr std::uint32_t kIPPUnknownPort = 1796;           // of a printer URI: neither 631 nor 443
// Null, a printer URI of the wrong scheme for the function, or one that cannot be parsed. Of a
// print job: null sets or bytes, a negative length, no document on its way.
constexpr std::uint32_t kIPPInvalidArgument = 87;

// The same of every operation whose answer is read: the printer answers in IPP 1.0 or 1.1, be it
// with the status 0x0503 (server-error-version-not-supported). What is sent, and read, is IPP 2.x:
// a printer without it is reached by its other protocols.
constexpr std::uint32_t kIPPVersion1 = 0x20000014;

// The same of a print job. Besides these: the IPP status (RFC 8011, appendix B) of a refusal; else
// what the exchange left, an HTTP status among that.
constexpr std::uint32_t kIPPDocumentEmpty = 1462;    // 0 bytes
constexpr std::uint32_t kIPPNoPrinterUri = 1280;     // the provider was made without one
constexpr std::uint32_t kIPPPrinterNotReady = 1460;  // not idle, or without room, for an hour
constexpr std::uint32_t kIPPJobAborted = 995;        // by the printer
constexpr std::uint32_t kIPPJobCancelled = 1223;     // with S_DEVICECANCELED
// server-error-busy: it has not taken the job.
constexpr std::uint32_t kIPPPrinterBusy = 0x20000011;
constexpr std::uint32_t kIPPPrinterStateUnknown = 0x20000010;  // it does not tell; nothing was sent
// It has every byte, but neither its answer nor its lists of jobs could be had: sending the
// document again may print it twice. After every other failure it is not printed.
constexpr std::uint32_t kIPPPerhapsPrinted = 0x20000012;
// Of CancelPrintJob: the printer lists no job that is certainly the one being printed.
constexpr std::uint32_t kIPPJobNotListed = 0x20000013;

// What HTTP status 401 becomes: as the answer to a document, and to anything else.
constexpr std::uint32_t kIPPNotAuthenticated = 1026;
constexpr std::uint32_t kIPPNotAuthorized = 1027;

// Of CheckAuthorization, beside the latter.
constexpr std::uint32_t kIPPNoSecureUri = 1025;       // the provider has no ipps URI
constexpr std::uint32_t kIPPUnexpectedAnswer = 1280;  // neither taken nor refused

// The result of a print job that was cancelled: at the printer's panel, by another program, or with
// CancelPrintJob.
constexpr HRESULT S_DEVICECANCELED = static_cast<HRESULT>(0x902A010A);

// Belongs to one thread at a time, but for CancelPrintJob. Texts are UTF-8. Results: 0 is success,
// E_FAIL every failure that nothing else is said of; outputs are then as they were.
class IPPProvider : public Corvane::IDisposable {
 public:
  virtual ~IPPProvider() = default;

  // A printer attribute, as it was when the provider was made; of a name "first_OR_second" the
  // first one that the printer has. VT_BSTR, or VT_ARRAY | VT_BSTR of several values; the caller
  // clears it. Numbers and enumerations are decimal text, booleans "0" and "1", a resolution
  // "600,600,3", a range "1,99", a time ISO 8601. "media-col.media-size" is a member of a
  // collection, and a whole collection one text "IPP_Set_Start,member,value,...,IPP_Set_End".
  virtual HRESULT GetValue(const char* name, VARIANT* value) = 0;
  // The same asked of the printer now, by its plain name: an attribute of the job at `uri`, or of
  // the printer. `resourceUri` is the path on the printer; null is the provider's own. `flags` are
  // kept for the exchange. A failure to reach the printer leaves its reason as the last error:
  // kIPPNotAuthorized, another HTTP status, or the host's code.
  virtual HRESULT GetIPPValue(const char* attributeName, bool forJob, VARIANT* value,
                              const char* uri, const char* resourceUri, std::uint32_t flags) = 0;

  // Job operations. `request` says what to print, for whom and how; what the printer answers goes
  // into `response`: its IPP status, which may be a refusal with a result of 0, and the job.
  // E_FAIL without the text that an operation needs sends nothing; else the last error is that of
  // the exchange.

  // The printer fetches the document at the request's document URI, which must be there.
  virtual HRESULT PrintUri(IPPRequestBase* request, IPPResponseBase* response) = 0;
  // The same as a document of the job at the request's job URI.
  virtual HRESULT SendURI(IPPRequestBase* request, IPPResponseBase* response) = 0;
  // A job without documents; the request's job name must be there.
  virtual HRESULT CreateJob(IPPRequestBase* request, IPPResponseBase* response) = 0;
  // Drops what of a document is not sent yet, and cancels one of the requesting user's jobs that
  // the printer lists as going on: the one at the request's job URI; else the one printed last
  // through this provider; if it has printed none, the first. Its URI is the request's from then
  // on. 0 when there was one, whatever the printer said to it, 1 when there was none. It is asked
  // on port 631, an ipps printer too, but then without the authorization value.
  virtual HRESULT CancelJob(IPPRequestBase* request, IPPResponseBase* response) = 0;
  // Prints `length` bytes, copied. Not chunked, they are the document: the call ends with its
  // outcome. They are sent up to ten times, two seconds apart, to a printer that says it is busy.
  // When it has taken them, its lists of jobs are asked how the job fares, again after two seconds
  // when it is in none of them; `response` then tells what is listed.
  //
  // Chunked, they are its first piece, of any size. The call waits until the printer is idle; then
  // PrintJobWrite sends the rest, while two threads watch: one asks every second how the job fares,
  // the other every five whether the printer's spool has room. They end with the job, and so does
  // the second for good: of the next jobs of this provider the spool is not watched. A document
  // that is not finished is dropped by the next PrintJob, by CancelJob and with the provider.
  //
  // 0: printed, or on its way. S_DEVICECANCELED. E_FAIL, by last error as above. The authorization
  // value of `request` becomes one of its extra headers.
  virtual HRESULT PrintJob(IPPRequestBase* request, IPPResponseBase* response, const void* buffer,
                           std::int32_t length, bool chunked) = 0;
  // The next piece; one of 0 bytes ends the document, and the call gives its outcome. Waits while
  // the printer's spool is full. Every result but 0 ends the job, but E_FAIL with
  // kIPPInvalidArgument, which changes nothing. When the connection breaks, or the
  // answer does not come, the job is looked up, and `response` tells what the printer lists.
  virtual HRESULT PrintJobWrite(IPPRequestBase* request, IPPResponseBase* response,
                                const void* buffer, std::int32_t length) = 0;

  // Milliseconds for connecting, sending and receiving, 30,000 each at first; not checked. The host
  // takes one limit: the longest of them goes to each of its requests from now on.
  virtual void SetTimeouts(std::uint32_t connectMs, std::uint32_t sendMs,
                           std::uint32_t receiveMs) = 0;
  // Whether a printer with an ipps URI takes the credentials of `request`, tried on a request of
  // the host's own, which has one exchange and needs no settings. 0: yes, and the authorization
  // value of `request`, if any, is added to httpRequest's headers. E_FAIL, by last error:
  // kIPPNoSecureUri; kIPPNotAuthorized refused; kIPPUnexpectedAnswer anything else that the printer
  // answered; kIPPPathTooShort no resource URI; or what the exchange left.
  virtual HRESULT CheckAuthorization(HTTPRequest* httpRequest, IPPRequestBase* request) = 0;
};

}  // namespace Corvane

extern "C" {

// The printer at a path, "/ipp/print", of the device. The device must answer on port 631, unless
// its host text is a USB port name (USB001 ...), and tell its printer attributes: one exchange,
// whose values GetValue has. Host texts other than IP literals are not looked up: such a device is
// silent. One reference, the caller's, or null with a last error. A connection attempt takes as
// long as the system lets it.
CORVANE_API Corvane::IPPProvider* CreateIPPProvider(Corvane::Address* address,
                                                    const char* resourceUri);
// The printer at a URI, "ipp://192.0.2.7/ipp/print": its path counts, with query and fragment; the
// device is the address. Schemes are compared exactly.
CORVANE_API Corvane::IPPProvider* CreateIPPPrintProvider(Corvane::Address* address,
                                                         const wchar_t* printerUri);
// The same for "ipps://...", over TLS on port 443. `flags` are kept for the exchanges.
CORVANE_API Corvane::IPPProvider* CreateSecureIPPPrintProvider(Corvane::Address* address,
                                                               const wchar_t* printerUri,
                                                               std::uint32_t flags);

// Cancels the document that `provider` is printing, from its first PrintJob until the call that
// ends it. Any thread that holds a reference may ask, the sender's own between two pieces among
// them, and as often as it likes.
//
// The job is marked at once: nothing more of the document goes out, and a wait for the printer
// ends. A piece, or a whole document, that the host is sending already ends as the host has it end,
// when it is sent or a limit of the host's has passed; only then does the sender's call come back,
// but never before this one. It gives S_DEVICECANCELED and drops the connection, unless the printer
// had taken the whole document before it could be cancelled: then the outcome is the document's
// own.
//
// Meanwhile the job is cancelled at the printer, on the caller's thread, over the scheme of the
// provider and with the headers of the job's request. A job that the printer does not list yet is
// asked for again, every half second for `timeoutMs`, which each exchange takes at most, too.
//
// 0: the printer has cancelled the job, which `response`, if given, then tells: unless that was
// known before. S_FALSE: nothing is being printed. E_FAIL with a last error when the printer has
// not cancelled it: kIPPJobNotListed, also before anything was sent; the IPP status of its refusal;
// or what the exchange left. The document is dropped all the same. E_FAIL without one for null and
// a provider that is not this library's; E_OUTOFMEMORY.
CORVANE_API HRESULT CancelPrintJob(Corvane::IPPProvider* provider,
                                   Corvane::IPPResponseBase* response, std::uint32_t timeoutMs);

}  // extern "C"

namespace Corvane {
using ::CancelPrintJob;
using ::CreateIPPPrintProvider;
using ::CreateIPPProvider;
using ::CreateSecureIPPPrintProvider;
}  // namespace Corvane

#endif  // CORVANE_IPP_PROVIDER_H_
