// Devices whose resources are listed in a discovery tree.
#ifndef CORVANE_PROVIDERS_QUARN_PROVIDER_IMPL_H_
#define CORVANE_PROVIDERS_QUARN_PROVIDER_IMPL_H_

#include "providers/xml_provider.h"

namespace Corvane {

class QUARNProviderImpl : public QUARNProvider, public XMLProvider {
 public:
  // Null for a null address, with 87 as the thread's last error, and for a device without a
  // discovery tree that lists the product configuration; else one reference, the caller's. The tree
  // stays cached for the provider's life.
  static QUARNProvider* Create(Address* address);

  explicit QUARNProviderImpl(Address* address);
  ~QUARNProviderImpl() override;

  std::uint32_t GetPort() override { return kQuarnPort; }
  HRESULT GetValue(const wchar_t* uri, const wchar_t* xpath, wchar_t* buffer,
                   std::uint32_t bufferSize, std::uint32_t* requiredLength, int useCache,
                   std::uint32_t lifeSpan) override;
  HRESULT GetResourceURI(const wchar_t* resourceType, wchar_t* buffer, std::uint32_t bufferSize,
                         std::uint32_t* requiredLength, std::uint32_t lifeSpan) override;

 private:
  std::wstring ResolveResource(const wchar_t* resourceType);
};

}  // namespace Corvane

#endif  // CORVANE_PROVIDERS_QUARN_PROVIDER_IMPL_H_
