// Fetches a device's XML resources, keeps them parsed, and answers XPaths in them: the core of the
// XML protocols.
#ifndef CORVANE_PROVIDERS_XML_PROVIDER_H_
#define CORVANE_PROVIDERS_XML_PROVIDER_H_

#include <map>
#include <new>
#include <string>

#include "core/com.h"
#include "corvane/code_unit_less.h"
#include "corvane/handles.h"
#include "corvane/http_request.h"
#include "corvane/xml_provider.h"

namespace Corvane {

// A variant says its port, and overrides GetContent when it fetches otherwise than by GET. One
// thread, the one that made it, whose COM initialisation it holds; different providers share
// nothing. Host calls happen without any lock.
class XMLProvider : public virtual IXMLProvider, public IDisposableImpl {
 public:
  // Takes a reference to the address, which may be null; then every fetch fails.
  XMLProvider(Address* address, std::uint32_t port);
  ~XMLProvider() override;

  std::uint32_t AddRef() override { return AddRefImpl(); }
  std::uint32_t AddRefConst() override { return AddRefImpl(); }
  std::uint32_t Dispose() override { return DisposeImpl(); }
  std::uint32_t Release() override { return DisposeImpl(); }
  const char* GetTypeName() override;

  HRESULT GetValue(const wchar_t* uri, const wchar_t* xpath, wchar_t* buffer,
                   std::uint32_t bufferSize, std::uint32_t* requiredLength, int useCache,
                   std::uint32_t lifeSpan) override;

  // The body of the resource as 8-bit text up to its first NUL: 0, or a failure with `content`
  // untouched. One exchange. A null `content` is a failure.
  virtual HRESULT GetContent(const wchar_t* uri, std::string* content);

  // The parsed resource, from the cache or fetched; the cache keeps its reference, so the caller
  // releases nothing. A body that is no XML gives an empty document, which is cached like any
  // other. 0 with a null document: the parser is not to be had.
  virtual HRESULT GetDOM(const wchar_t* uri, IXMLDOMDocument** document, int useCache,
                         std::uint32_t lifeSpan);

 protected:
  Address* DeviceAddress() const { return m_address.Get(); }

  // What the variants' factories do: a provider over the device with one reference, if the resource
  // has the node. Null for a null address, with 87 as the thread's last error, and for a device
  // that does not answer so.
  template <typename Variant>
  static Variant* CreateIfPresent(Address* address, const wchar_t* uri, const wchar_t* xpath) {
    if (!address) {
      SetLastError(ERROR_INVALID_PARAMETER);
      return nullptr;
    }
    auto provider = RefPtr<Variant>::Share(new (std::nothrow) Variant(address));
    return provider && provider->HasNode(uri, xpath) ? provider.Release() : nullptr;
  }

  // A fresh request on the provider's port: 0, the host's code, or E_FAIL for a null request.
  HRESULT CreateRequest(RefPtr<HTTPRequest>* request);
  // Performs the exchange: 0 and the body of a response with status 200, else E_FAIL.
  static HRESULT ReadResponse(HTTPRequest* request, std::string* content);

 private:
  // A query without a buffer says that memory is lacking when the node exists.
  bool HasNode(const wchar_t* uri, const wchar_t* xpath);

  struct CachedDocument {
    RefPtr<IXMLDOMDocument> document;
    std::uint64_t loadTime = 0;
  };

  IXMLDOMDocument* FindFresh(const wchar_t* uri, std::uint32_t lifeSpan);
  static RefPtr<IXMLDOMDocument> Parse(const std::string& content);

  RefPtr<Address> m_address;
  std::uint32_t m_port;

 protected:
  // Credentials for a variant or a host's subclass to set; the library leaves them empty.
  std::wstring m_userName;
  std::wstring m_password;

 private:
  std::map<std::wstring, CachedDocument, CodeUnitLess> m_documents;  // by resource path
  ComInitialization m_com;
};

}  // namespace Corvane

#endif  // CORVANE_PROVIDERS_XML_PROVIDER_H_
