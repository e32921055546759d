#include "providers/quarn_provider_impl.h"

#include <vector>

namespace Corvane {
namespace {

constexpr wchar_t kDiscoveryTree[] = L"/DevMgmt/DiscoveryTree.xml";
constexpr wchar_t kProductConfig[] = L"quarn:zqQuarnProductConfigDyn";
constexpr std::uint32_t kUsualUriChars = 256;

std::wstring ResourceUriExpression(const wchar_t* resourceType) {
  return std::wstring(L"//.[dd:ResourceType=\"") + resourceType + L"\"]/dd:ResourceURI";
}

}  // namespace

QUARNProvider* QUARNProviderImpl::Create(Address* address) {
  TraceScope trace(L"Corvane::QUARNProviderImpl::Create");
  return CreateIfPresent<QUARNProviderImpl>(address, kDiscoveryTree,
                                            ResourceUriExpression(kProductConfig).c_str());
}

QUARNProviderImpl::QUARNProviderImpl(Address* address) : XMLProvider(address, kQuarnPort) {
  TraceScope trace(L"Corvane::QUARNProviderImpl::QUARNProviderImpl");
}

QUARNProviderImpl::~QUARNProviderImpl() {
  TraceScope trace(L"Corvane::QUARNProviderImpl::~QUARNProviderImpl");
}

HRESULT QUARNProviderImpl::GetValue(const wchar_t* uri, const wchar_t* xpath, wchar_t* buffer,
                                    std::uint32_t bufferSize, std::uint32_t* requiredLength,
                                    int useCache, std::uint32_t lifeSpan) {
  if (!uri || !xpath) return E_FAIL;
  const bool isResourceType = uri[0] != L'\0' && uri[0] != L'/';
  const std::wstring path = isResourceType ? ResolveResource(uri) : uri;
  return XMLProvider::GetValue(path.c_str(), xpath, buffer, bufferSize, requiredLength, useCache,
                               lifeSpan);
}

HRESULT QUARNProviderImpl::GetResourceURI(const wchar_t* resourceType, wchar_t* buffer,
                                          std::uint32_t bufferSize, std::uint32_t* requiredLength,
                                          std::uint32_t lifeSpan) {
  if (!resourceType) return E_FAIL;
  return XMLProvider::GetValue(kDiscoveryTree, ResourceUriExpression(resourceType).c_str(), buffer,
                               bufferSize, requiredLength, 1, lifeSpan);
}

// The path that the tree gives for the type, whatever the tree's age; the type itself when there is
// none.
std::wstring QUARNProviderImpl::ResolveResource(const wchar_t* resourceType) {
  std::vector<wchar_t> room(kUsualUriChars);
  std::uint32_t needed = 0;
  HRESULT result = GetResourceURI(resourceType, room.data(), kUsualUriChars, &needed, 0);
  if (result == E_OUTOFMEMORY) {
    room.resize(needed);
    result = GetResourceURI(resourceType, room.data(), needed, &needed, 0);
  }
  // A length of 0 goes with a tree that could not be parsed at all: nothing was written.
  return result == S_OK && needed > 0 ? room.data() : resourceType;
}

}  // namespace Corvane

Corvane::QUARNProvider* CreateQUARNProvider(Corvane::Address* address) {
  Corvane::TraceScope trace(L"Corvane::CreateQUARNProvider");
  return Corvane::QUARNProviderImpl::Create(address);
}
