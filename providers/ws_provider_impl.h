// Resources read through WS-Management (DMTF DSP0226): a WS-Transfer Get for a resource URI.
#ifndef CORVANE_PROVIDERS_WS_PROVIDER_IMPL_H_
#define CORVANE_PROVIDERS_WS_PROVIDER_IMPL_H_

#include "providers/xml_provider.h"

namespace Corvane {

class WSProviderImpl : public WSProvider, public XMLProvider {
 public:
  // Null for a null address, with 87 as the thread's last error, and for a device whose device
  // service tells no make and model; else one reference, the caller's.
  static WSProvider* Create(Address* address);

  explicit WSProviderImpl(Address* address);
  ~WSProviderImpl() override;

  std::uint32_t GetPort() override { return kWsPort; }
  HRESULT GetResourcePath(const wchar_t* resourceURI, wchar_t* buffer, std::uint32_t bufferSize,
                          std::uint32_t* requiredLength) override;

  // The path of a request for the resource; E_FAIL and `path` untouched when the URI has no field
  // for it.
  virtual HRESULT GetPathFromResourceURI(const wchar_t* resourceURI, std::wstring* path);
  // The SOAP 1.2 request, with a message id of its own.
  virtual void BuildGetEnvelope(const wchar_t* resourceURI, const wchar_t* path,
                                std::string* envelope);

  // Posts the request; `content` is the reply's envelope.
  HRESULT GetContent(const wchar_t* resourceURI, std::string* content) override;
};

}  // namespace Corvane

#endif  // CORVANE_PROVIDERS_WS_PROVIDER_IMPL_H_
