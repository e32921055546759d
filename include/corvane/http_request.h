// One HTTP exchange with the device (RFC 9110), performed by the host.
#ifndef CORVANE_HTTP_REQUEST_H_
#define CORVANE_HTTP_REQUEST_H_

#include <cstdint>

#include "corvane/disposable.h"

namespace Corvane {

class HTTPResponse;

// Made by an Address, used for one exchange on one thread: configure, GetResponse, read the
// response, Dispose. Texts and bodies given are copied; what is wrong with one shows as the failure
// of GetResponse. The verb is GET unless SetMethod says otherwise. Operations marked "host" are
// never called by the library.
class CORVANE_API HTTPRequest : public virtual Corvane::IDisposable {
 public:
  HTTPRequest();
  HTTPRequest(const HTTPRequest& other);
  HTTPRequest& operator=(const HTTPRequest& other);

  // host: the path last given to SetURI. Owned by the request.
  virtual const wchar_t* GetURI() = 0;
  // Resource path on the device, with its query: "/DevMgmt/DiscoveryTree.xml".
  virtual void SetURI(const wchar_t* path) = 0;
  virtual void SetUserName(const wchar_t* userName) = 0;
  virtual void SetPassword(const wchar_t* password) = 0;
  virtual void SetMethod(const wchar_t* verb) = 0;
  virtual void AddHeader(const wchar_t* name, const wchar_t* value) = 0;
  virtual void SetContentType(const wchar_t* contentType) = 0;
  // The whole body, `size` bytes.
  virtual void SetRequestData(const void* data, std::uint32_t size) = 0;
  // Performs the exchange. 0 and a response that the request owns and that lives as long as the
  // request, whatever its status; or a failure and null. The library never deletes a response.
  virtual HRESULT GetResponse(HTTPResponse** response) = 0;
  // One value that the library passes through for IPP.
  virtual void SetOption(std::uint32_t option) = 0;
  // The system error code of a failed GetResponse.
  virtual std::uint32_t GetLastError() = 0;
  // host: ends an exchange that is under way on another thread, as a failure; and any later one of
  // this request.
  virtual void Cancel() = 0;

  virtual ~HTTPRequest();
};

}  // namespace Corvane

#endif  // CORVANE_HTTP_REQUEST_H_
