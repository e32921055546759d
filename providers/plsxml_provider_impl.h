// Plain XML pages of the device's web server.
#ifndef CORVANE_PROVIDERS_PLSXML_PROVIDER_IMPL_H_
#define CORVANE_PROVIDERS_PLSXML_PROVIDER_IMPL_H_

#include "providers/xml_provider.h"

namespace Corvane {

class PLSXMLProviderImpl : public PLSXMLProvider, public XMLProvider {
 public:
  // Null for a null address, with 87 as the thread's last error, and for a device whose product
  // information tells no serial number; else one reference, the caller's.
  static PLSXMLProvider* Create(Address* address);

  explicit PLSXMLProviderImpl(Address* address);
  ~PLSXMLProviderImpl() override;

  std::uint32_t GetPort() override { return kHttpPort; }
};

}  // namespace Corvane

#endif  // CORVANE_PROVIDERS_PLSXML_PROVIDER_IMPL_H_
