#include "collection/ipp_data_mapper.h"

#include <algorithm>
#include <tuple>
#include <utility>
#include <vector>

#include "base/utf8.h"
#include "core/com.h"
#include "core/file_time.h"
#include "core/text.h"
#include "core/trace.h"

namespace Corvane {
namespace {

constexpr wchar_t kParameters[] = L"IPPParams";
constexpr char kDefaultResourceUri[] = "/ipp/printer";
// Values of one attribute that have a number of their own.
constexpr std::size_t kMaxNumbered = 999;

// "name.002" as "name" and 2; any other name as it is and 0.
std::pair<std::wstring_view, std::size_t> WithoutNumber(std::wstring_view name) {
  constexpr std::size_t kSuffix = 4;
  if (name.size() <= kSuffix || name[name.size() - kSuffix] != L'.') return {name, 0};
  std::size_t number = 0;
  for (const wchar_t c : name.substr(name.size() - 3)) {
    if (c < L'0' || c > L'9') return {name, 0};
    number = number * 10 + static_cast<std::size_t>(c - L'0');
  }
  return {name.substr(0, name.size() - kSuffix), number};
}

std::wstring NumberedAttribute(const std::wstring& key, std::size_t number) {
  const std::wstring digits = std::to_wstring(1000 + number);
  return key + L'.' + digits.substr(1);
}

_variant_t ConvertedAttribute(const IPPDataItemSpec& item, const std::string& text) {
  VARIANT value;
  VariantInit(&value);
  value.bstrVal = BstrFromUtf8(text).Release();
  value.vt = VT_BSTR;
  return item.ConvertValue(_variant_t(value, false));
}

}  // namespace

// What an attribute has, each converted, and when it was read.
struct IPPDataMapper::Values {
  _variant_t all;
  std::vector<_variant_t> each;
  std::uint64_t timestamp = 0;
};

IPPDataMapper::IPPDataMapper(IPPProviderImpl* provider, DataMapSpec* spec)
    : m_provider(RefPtr<IPPProviderImpl>::Share(provider)),
      m_spec(RefPtr<DataMapSpec>::Share(spec)) {
  TraceScope trace(L"Corvane::IPPDataMapper::IPPDataMapper");
  m_mapperCom.Begin(trace);
}

IPPDataMapper::~IPPDataMapper() {
  TraceScope trace(L"Corvane::IPPDataMapper::~IPPDataMapper");
  m_provider.Reset();
  m_spec.Reset();
  m_mapperCom.End();
}

const char* IPPDataMapper::GetTypeName() { return kClassIdentification; }

std::wstring IPPDataMapper::GetDataMapName() {
  TraceScope trace(L"Corvane::IPPDataMapper::GetDataMapName");
  return L"IPPDataMap";
}

std::string IPPDataMapper::ResourceUriOf(DataMapSpec* spec) {
  const auto* const parameters = dynamic_cast<IPPDataItemSpec*>(spec->GetDataItemSpec(kParameters));
  return parameters && parameters->m_resourceUri ? ToUtf8(parameters->m_resourceUri)
                                                 : kDefaultResourceUri;
}

HRESULT IPPDataMapper::GetValue(const wchar_t* name, VARIANT* value) {
  TraceScope trace(L"Corvane::IPPDataMapper::GetValue");
  const HRESULT stored = DataCollectionImpl::GetValue(name, value);
  if (stored == S_OK || !name || !*name || !value || !m_spec || !m_provider) return stored;

  std::wstring_view base = name;
  std::size_t number = 0;
  IPPDataItemSpec* item = FindItem(base);
  if (!item) {
    std::tie(base, number) = WithoutNumber(name);
    if (number > 0) item = FindItem(base);
  }
  if (!item) return stored;

  Values values;
  if (const HRESULT result = Read(*item, &values); result != S_OK) return result;
  if (number > values.each.size()) return S_FALSE;
  if (!item->IsTransient()) Keep(*item, std::wstring(base), values);
  MoveTo(std::move(number == 0 ? values.all : values.each[number - 1]), value);
  return S_OK;
}

// A dot may belong to the item's own name, a prefix never. The map's parameters are no item.
IPPDataItemSpec* IPPDataMapper::FindItem(std::wstring_view name) const {
  const std::size_t colon = name.find(L':');
  if (colon != std::wstring_view::npos) name.remove_prefix(colon + 1);
  if (name == kParameters) return nullptr;
  return dynamic_cast<IPPDataItemSpec*>(m_spec->GetDataItemSpec(std::wstring(name)));
}

HRESULT IPPDataMapper::Read(const IPPDataItemSpec& item, Values* values) {
  const std::string command = Parameter(item, &IPPDataItemSpec::m_command);
  IPPQuery query;
  query.forJob = command == "Get-Job-Attributes";
  if (!query.forJob && !command.empty() && command != "Get-Printer-Attributes") return E_FAIL;
  query.name = ToUtf8(HasText(item.GetAttributeID()) ? item.GetAttributeID() : item.GetName());
  query.jobUri = Parameter(item, &IPPDataItemSpec::m_jobUri);
  query.resourceUri = Parameter(item, &IPPDataItemSpec::m_resourceUri);
  query.charset = Parameter(item, &IPPDataItemSpec::m_charset);
  query.language = Parameter(item, &IPPDataItemSpec::m_lang);

  std::vector<std::string> texts;
  if (!query.forJob && !HasOwnWay(item) && !item.IsTransient() &&
      !IsExpired(m_provider->FetchTime(), static_cast<unsigned>(item.GetLifespan()))) {
    texts = m_provider->ValuesOf(query.name);
    values->timestamp = m_provider->FetchTime();
  }
  if (texts.empty()) {
    if (!GetCurrentFileTime(&values->timestamp)) return E_FAIL;
    if (const HRESULT result = m_provider->Query(query, &texts); result != S_OK) return result;
  }
  std::string joined;
  for (const std::string& text : texts) {
    joined += text + ',';
    values->each.push_back(ConvertedAttribute(item, text));
  }
  joined.pop_back();
  values->all = ConvertedAttribute(item, joined);
  return S_OK;
}

// Whether the item is read otherwise than the attributes were that the provider keeps.
bool IPPDataMapper::HasOwnWay(const IPPDataItemSpec& item) const {
  return HasText(item.m_resourceUri) || !Parameter(item, &IPPDataItemSpec::m_charset).empty() ||
         !Parameter(item, &IPPDataItemSpec::m_lang).empty();
}

std::string IPPDataMapper::Parameter(const IPPDataItemSpec& item,
                                     wchar_t* IPPDataItemSpec::*field) const {
  if (HasText(item.*field)) return ToUtf8(item.*field);
  const auto* const parameters =
      dynamic_cast<IPPDataItemSpec*>(m_spec->GetDataItemSpec(kParameters));
  return parameters && HasText(parameters->*field) ? ToUtf8(parameters->*field) : std::string();
}

// All that was read, so that asking for the next of several values costs no exchange; what an
// earlier, longer list left goes.
void IPPDataMapper::Keep(const IPPDataItemSpec& item, const std::wstring& key,
                         const Values& values) {
  const auto lifespan = static_cast<unsigned>(item.GetLifespan());
  const std::uint64_t timestamp = lifespan == 0 ? 0 : values.timestamp;
  m_values.insert_or_assign(key, CachedValue{values.all, timestamp, lifespan});
  const std::size_t count = values.each.size() > 1 ? std::min(values.each.size(), kMaxNumbered) : 0;
  std::size_t number = 1;
  for (; number <= count; ++number) {
    m_values.insert_or_assign(NumberedAttribute(key, number),
                              CachedValue{values.each[number - 1], timestamp, lifespan});
  }
  while (m_values.erase(NumberedAttribute(key, number)) > 0) ++number;
}

}  // namespace Corvane
