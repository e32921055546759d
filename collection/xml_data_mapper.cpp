#include "collection/xml_data_mapper.h"

#include <utility>
#include <vector>

#include "core/com.h"
#include "core/trace.h"
#include "providers/plsxml_provider_impl.h"
#include "providers/quarn_provider_impl.h"
#include "providers/ws_provider_impl.h"

namespace Corvane {
namespace {

constexpr std::uint32_t kUsualValueChars = 256;

const wchar_t* ProtocolOfPort(std::uint32_t port) {
  switch (port) {
    case kHttpPort:
      return L"PLSXML";
    case kWsPort:
      return L"WS";
    case kQuarnPort:
      return L"QUARN";
    default:
      return L"";
  }
}

}  // namespace

XMLDataMapper::XMLDataMapper(IXMLProvider* provider, DataMapSpec* spec)
    : m_provider(RefPtr<IXMLProvider>::Share(provider)), m_spec(RefPtr<DataMapSpec>::Share(spec)) {
  TraceScope trace(L"Corvane::XMLDataMapper::XMLDataMapper");
}

XMLDataMapper::~XMLDataMapper() {
  TraceScope trace(L"Corvane::XMLDataMapper::~XMLDataMapper");
  m_provider.Reset();
  m_spec.Reset();
}

const char* XMLDataMapper::GetTypeName() { return kClassIdentification; }

HRESULT XMLDataMapper::GetValue(const wchar_t* name, VARIANT* value) {
  TraceScope trace(L"Corvane::XMLDataMapper::GetValue");
  const HRESULT stored = DataCollectionImpl::GetValue(name, value);
  if (stored == S_OK || !name || !*name || !value) return stored;

  const XMLDataItemSpec* const item = FindItem(name);
  if (!item) return stored;
  _variant_t fetched;
  const HRESULT result = Fetch(*item, &fetched);
  if (result != S_OK) return result;
  _variant_t converted = item->ConvertValue(std::move(fetched));
  if (!item->IsTransient()) {
    StoreValue(name, &converted, static_cast<unsigned int>(item->GetLifespan()));
  }
  MoveTo(std::move(converted), value);
  return S_OK;
}

std::wstring XMLDataMapper::GetDataMapName() {
  TraceScope trace(L"Corvane::XMLDataMapper::GetDataMapName");
  if (!m_provider) return {};
  return std::wstring(L"XMLDataMap[@Protocol='") + ProtocolOfPort(m_provider->GetPort()) + L"']";
}

XMLDataItemSpec* XMLDataMapper::FindItem(const wchar_t* name) {
  if (!m_spec) return nullptr;
  const std::wstring_view key = name;
  const std::size_t colon = key.find(L':');
  const std::wstring itemName(colon == std::wstring_view::npos ? key : key.substr(colon + 1));
  return dynamic_cast<XMLDataItemSpec*>(m_spec->GetDataItemSpec(itemName));
}

HRESULT XMLDataMapper::Fetch(const XMLDataItemSpec& item, _variant_t* value) {
  const wchar_t* const uri = item.GetUri();
  const wchar_t* const xpath = item.GetXPath();
  if (!m_provider || !uri || !*uri || !xpath || !*xpath) return E_FAIL;
  const int useCache = item.IsTransient() ? 0 : 1;
  std::vector<wchar_t> buffer(kUsualValueChars);
  std::uint32_t required = 0;
  HRESULT result = m_provider->GetValue(uri, xpath, buffer.data(), kUsualValueChars, &required,
                                        useCache, static_cast<std::uint32_t>(item.GetLifespan()));
  if (result == E_OUTOFMEMORY) {
    // Once more, with a character to spare. The document is taken whatever its age, for it has just
    // been looked at; that of a transient item is fetched again.
    buffer.assign(std::size_t{required} + 1, L'\0');
    result = m_provider->GetValue(uri, xpath, buffer.data(), required, &required, useCache, 0);
  }
  if (result == S_OK) *value = buffer.data();
  return result;
}

}  // namespace Corvane
