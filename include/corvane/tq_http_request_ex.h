// The extended request of the printing side: a body streamed while it is made.
#ifndef CORVANE_TQ_HTTP_REQUEST_EX_H_
#define CORVANE_TQ_HTTP_REQUEST_EX_H_

#include <cstdint>

#include "corvane/platform.h"

namespace Corvane {

// Of HTTPRequest::GetResponse after a whole body, chunked or of SendBody: the connection has taken
// every byte, and the device's answer did not come, broke off or is none. It may have printed the
// document, so nobody should send it again without asking. GetLastError tells what went wrong.
constexpr HRESULT kAnswerLost = static_cast<HRESULT>(0x83E8F5FA);

// Reached from an HTTPRequest by a checked dynamic cast. Operations with a counterpart in
// HTTPRequest mean the same as there, where the library calls them, but for SetOption; those marked
// "host" it never calls.
//
// A streamed exchange: settings, with one header "Transfer-Encoding: chunked" among them;
// BeginChunkedSend; WriteChunk for each chunk, which the caller frames itself (RFC 9112, 7.1), the
// last one too; FinishChunkedSend; HTTPRequest::GetResponse. It is the request's one exchange.
//
// A device may answer before it has the whole body, as with 401 or 413. The sending then ends: the
// operation under way sends no further byte, reads the rest of that response and fails;
// GetLastError is its status, and GetResponse gives it. When the sending fails otherwise,
// GetLastError is a system error code and GetResponse fails with it; with kAnswerLost when that
// happens behind the whole body. A step that is not its turn
// fails, sends nothing, and changes nothing else but GetLastError.
class CORVANE_API TqHTTPRequestEx {
 public:
  TqHTTPRequestEx();
  TqHTTPRequestEx(const TqHTTPRequestEx& other);
  TqHTTPRequestEx& operator=(const TqHTTPRequestEx& other);

  virtual const wchar_t* GetURI() = 0;  // host
  virtual void SetURI(const wchar_t* path) = 0;
  virtual void SetUserName(const wchar_t* userName) = 0;
  virtual void SetPassword(const wchar_t* password) = 0;
  virtual void SetMethod(const wchar_t* verb) = 0;
  virtual void SetContentType(const wchar_t* contentType) = 0;
  virtual void Cancel() = 0;  // host: ends a wait on another thread soon
  virtual void SetRequestData(const void* data, std::uint32_t size) = 0;
  // host: a body is on its way: from BeginChunkedSend to FinishChunkedSend or a failure, or within
  // SendBody. Any thread.
  virtual bool IsSending() = 0;
  // Pointer-sized: a time-out in milliseconds on one path of the caller, 0 to use the host's own;
  // on the other the pointer that the address's GetAddress gives, which changes nothing. The host
  // knows its own text by its place, and anybody's by not fitting 32 bits.
  virtual void SetOption(std::uintptr_t option) = 0;
  virtual void SetHeader(const wchar_t* name, const wchar_t* value) = 0;  // host: replaces
  // As HTTPRequest::GetLastError; after a failed step of a streamed exchange, of that.
  virtual std::uint32_t GetLastError() = 0;  // host
  // A whole body at once, `size` bytes, not copied: performs the exchange. It may take any time, as
  // long as the device takes bytes. GetResponse then gives the response, or the failure,
  // kAnswerLost behind the whole body; GetLastError has the failure's code at once.
  virtual void SendBody(const void* data, std::uint32_t size) = 0;
  // Begins a chunked body: connects and sends the head. `context` comes back with each chunk.
  virtual HRESULT BeginChunkedSend(std::uintptr_t context) = 0;
  // One framed chunk, `size` bytes, written unchanged. Returns when the connection has taken it,
  // however long a slow device lets it wait, or with a failure. 0 bytes are no chunk: that sends
  // nothing.
  virtual HRESULT WriteChunk(const void* data, std::uint32_t size, std::uintptr_t context) = 0;
  // The body is complete; the response comes from HTTPRequest::GetResponse, which without this step
  // fails and ends the exchange.
  virtual HRESULT FinishChunkedSend() = 0;
  // host: bytes of a streamed body, framing and all, that the connection has taken; of one in a
  // piece, when its exchange is over. Any thread.
  virtual std::uint64_t GetSentBytes() = 0;
  // What SendBody will be given; another size there fails the exchange. Nothing elsewhere.
  virtual void SetContentLength(std::uint32_t size) = 0;

  virtual ~TqHTTPRequestEx();
};

}  // namespace Corvane

#endif  // CORVANE_TQ_HTTP_REQUEST_EX_H_
