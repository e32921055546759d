#include "providers/plsxml_provider_impl.h"

#include <new>

#include "platform/system.h"

namespace Corvane {
namespace {

constexpr wchar_t kProductInformation[] = L"/zq/device/product_information.xml";
constexpr wchar_t kSerialNumber[] = L"//ProductSerialNumber";

}  // namespace

PLSXMLProvider* PLSXMLProviderImpl::Create(Address* address) {
  TraceScope trace(L"Corvane::PLSXMLProviderImpl::Create");
  if (!address) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  auto provider = RefPtr<PLSXMLProviderImpl>::Share(new (std::nothrow) PLSXMLProviderImpl(address));
  if (!provider) return nullptr;
  return provider->HasNode(kProductInformation, kSerialNumber) ? provider.Release() : nullptr;
}

PLSXMLProviderImpl::PLSXMLProviderImpl(Address* address) : XMLProvider(address, kPort) {
  TraceScope trace(L"Corvane::PLSXMLProviderImpl::PLSXMLProviderImpl");
}

PLSXMLProviderImpl::~PLSXMLProviderImpl() {
  TraceScope trace(L"Corvane::PLSXMLProviderImpl::~PLSXMLProviderImpl");
}

}  // namespace Corvane
