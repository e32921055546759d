// The extended request of the printing side: a body streamed while it is made.
#ifndef CORVANE_TQ_HTTP_REQUEST_EX_H_
#define CORVANE_TQ_HTTP_REQUEST_EX_H_

#include <cstdint>

#include "corvane/platform.h"

namespace Corvane {

// Reached from an HTTPRequest by a checked dynamic cast. The caller frames chunks itself (RFC
// 9112, 7.1): the host writes the bytes that it is given. Operations with a counterpart in
// HTTPRequest mean the same as there; those marked "host" are never called by the library.
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
  virtual void Cancel() = 0;  // host
  virtual void SetRequestData(const void* data, std::uint32_t size) = 0;
  virtual bool IsSending() = 0;  // host
  // Pointer-sized: a 32-bit setting on one path of the caller, the device's host text on the other.
  virtual void SetOption(std::uintptr_t option) = 0;
  virtual void SetHeader(const wchar_t* name, const wchar_t* value) = 0;  // host
  virtual std::uint32_t GetLastError() = 0;                               // host
  // A whole body at once, `size` bytes; a failure shows as that of HTTPRequest::GetResponse.
  virtual void SendBody(const void* data, std::uint32_t size) = 0;
  // Begins a chunked body; `context` comes back with each chunk.
  virtual HRESULT BeginChunkedSend(std::uintptr_t context) = 0;
  // One framed chunk, `size` bytes, written unchanged. Returns when the device has taken it.
  virtual HRESULT WriteChunk(const void* data, std::uint32_t size, std::uintptr_t context) = 0;
  // The body is complete; the response comes from HTTPRequest::GetResponse.
  virtual HRESULT FinishChunkedSend() = 0;
  virtual std::uint64_t GetSentBytes() = 0;  // host
  virtual void SetContentLength(std::uint32_t size) = 0;

  virtual ~TqHTTPRequestEx();
};

}  // namespace Corvane

#endif  // CORVANE_TQ_HTTP_REQUEST_EX_H_
