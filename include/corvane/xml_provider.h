// Providers over XML resources, for clients that address resources themselves.
#ifndef CORVANE_XML_PROVIDER_H_
#define CORVANE_XML_PROVIDER_H_

#include <cstdint>

#include "corvane/address.h"
#include "corvane/disposable.h"

namespace Corvane {

// Values at XPaths of a device's XML resources. Sizes and lengths count wide characters with the
// terminator. Used by one thread at a time, the one that made it.
class IXMLProvider : public Corvane::IDisposable {
 public:
  virtual ~IXMLProvider() = default;

  // TCP port of the variant's web service.
  virtual std::uint32_t GetPort() = 0;

  // The text of the first node that `xpath` (an XSL pattern) selects in the resource `uri`. With
  // `useCache` 0 the resource is fetched anew; else a document of it that is no older than
  // `lifeSpan` (tenths of a second, 0 for ever) is used. `buffer` is written on 0 only.
  // - 0: the text is in `buffer`, or *requiredLength is 0 and no document came of the resource.
  // - S_FALSE: no such node, or the resource is no XML; *requiredLength is 0.
  // - E_OUTOFMEMORY: the node exists, and `buffer` is null or too small; *requiredLength says what
  //   it takes.
  // - E_FAIL: no answer, a status other than 200, an expression that does not parse, or a null
  //   `uri` or `requiredLength`.
  // - E_INVALIDARG: `xpath` is null (E_FAIL from a QUARNProvider).
  virtual HRESULT GetValue(const wchar_t* uri, const wchar_t* xpath, wchar_t* buffer,
                           std::uint32_t bufferSize, std::uint32_t* requiredLength, int useCache,
                           std::uint32_t lifeSpan) = 0;
};

// Devices with a discovery tree, on port 8080: a `uri` that does not begin with "/" is a resource
// type, resolved through the tree; a type that it lacks is used as the path itself.
class QUARNProvider : public virtual IXMLProvider {
 public:
  // The path of the first resource of the type, as GetValue answers it.
  virtual HRESULT GetResourceURI(const wchar_t* resourceType, wchar_t* buffer,
                                 std::uint32_t bufferSize, std::uint32_t* requiredLength,
                                 std::uint32_t lifeSpan) = 0;
};

// WS-Management over HTTP on port 7627: `uri` is a resource URI such as
// "urn:zq:imaging:con:service:device:DeviceService", the document the SOAP reply.
class WSProvider : public virtual IXMLProvider {
 public:
  // The path that a request for the resource goes to: the next to last of its fields between
  // colons, after "/". 0; E_FAIL for null or for a URI without such a field, *requiredLength 0;
  // E_OUTOFMEMORY when `bufferSize` is less than *requiredLength, which is set. No exchange.
  virtual HRESULT GetResourcePath(const wchar_t* resourceURI, wchar_t* buffer,
                                  std::uint32_t bufferSize, std::uint32_t* requiredLength) = 0;
};

// Plain XML pages of the device's web server on port 80.
class PLSXMLProvider : public virtual IXMLProvider {};

}  // namespace Corvane

// Each asks the device once whether it speaks the protocol. Null when it does not, or for a null
// address (the thread's last error is then 87); else an object with one reference that the caller
// gives back.
extern "C" {
CORVANE_API Corvane::QUARNProvider* CreateQUARNProvider(Corvane::Address* address);
CORVANE_API Corvane::WSProvider* CreateWSProvider(Corvane::Address* address);
}

namespace Corvane {
using ::CreateQUARNProvider;
using ::CreateWSProvider;
}  // namespace Corvane

#endif  // CORVANE_XML_PROVIDER_H_
