#include "providers/plsxml_provider_impl.h"

namespace Corvane {
namespace {

constexpr wchar_t kProductInformation[] = L"/zq/device/product_information.xml";
constexpr wchar_t kSerialNumber[] = L"//ProductSerialNumber";

}  // namespace

PLSXMLProvider* PLSXMLProviderImpl::Create(Address* address) {
  TraceScope trace(L"Corvane::PLSXMLProviderImpl::Create");
  return CreateIfPresent<PLSXMLProviderImpl>(address, kProductInformation, kSerialNumber);
}

PLSXMLProviderImpl::PLSXMLProviderImpl(Address* address) : XMLProvider(address, kHttpPort) {
  TraceScope trace(L"Corvane::PLSXMLProviderImpl::PLSXMLProviderImpl");
}

PLSXMLProviderImpl::~PLSXMLProviderImpl() {
  TraceScope trace(L"Corvane::PLSXMLProviderImpl::~PLSXMLProviderImpl");
}

}  // namespace Corvane
