#include "collection/oid_data_mapper.h"

#include <algorithm>
#include <chrono>
#include <cwchar>
#include <utility>

#include "base/oid.h"
#include "core/com.h"
#include "core/text.h"
#include "core/trace.h"

namespace Corvane {
namespace {

// One of those that a group's request asks for.
bool IsGroupMember(OIDDataItemSpec& item) {
  return HasText(item.GetGroup()) && HasText(item.GetOid()) && !item.IsTransient() &&
         !item.GetNextOIDDataItemSpec() && !std::wcschr(item.GetOid(), L';');
}

// What no store or cache could give back as a value.
bool IsNoOidValue(const VARIANT& value) {
  return value.vt == VT_EMPTY || value.vt == VT_NULL || value.vt == VT_ERROR;
}

std::wstring WalkStepKey(const std::wstring& base, int step) {
  std::wstring digits = std::to_wstring(step);
  digits.insert(0, 3 - std::min<std::size_t>(digits.size(), 3), L'0');
  return base + L'.' + digits;
}

// The number of three digits, or 0.
int WalkStepOf(std::wstring_view suffix) {
  if (suffix.size() != 3) return 0;
  int step = 0;
  for (const wchar_t c : suffix) {
    if (c < L'0' || c > L'9') return 0;
    step = step * 10 + static_cast<int>(c - L'0');
  }
  return step;
}

}  // namespace

// A name of the form [PREFIX:]NAME[.SUFFIX], taken apart.
struct OIDDataMapper::Request {
  explicit Request(std::wstring_view text) : whole(text) {
    const std::size_t colon = text.find(L':');
    rest = text.substr(colon == std::wstring_view::npos ? 0 : colon + 1);
    TakeNoSuffix();
  }
  void TakeNoSuffix() {
    name = rest;
    prefixAndName = whole;
    suffix.reset();
  }
  // `dot` is a place in `rest`.
  void TakeSuffixAt(std::size_t dot) {
    name = rest.substr(0, dot);
    suffix = rest.substr(dot + 1);
    prefixAndName = whole.substr(0, whole.size() - suffix->size() - 1);
  }

  std::wstring_view whole;
  std::wstring_view rest;  // behind the prefix
  std::wstring_view name;
  std::wstring_view prefixAndName;
  std::optional<std::wstring_view> suffix;
};

OIDDataMapper::OIDDataMapper(OIDProvider* provider, DataMapSpec* spec)
    : m_provider(RefPtr<OIDProvider>::Share(provider)), m_spec(RefPtr<DataMapSpec>::Share(spec)) {
  TraceScope trace(L"Corvane::OIDDataMapper::OIDDataMapper");
  m_mapperCom.Begin(trace);
}

OIDDataMapper::~OIDDataMapper() {
  TraceScope trace(L"Corvane::OIDDataMapper::~OIDDataMapper");
  m_provider.Reset();
  m_spec.Reset();
  m_mapperCom.End();
}

const char* OIDDataMapper::GetTypeName() { return kClassIdentification; }

std::wstring OIDDataMapper::GetDataMapName() {
  TraceScope trace(L"Corvane::OIDDataMapper::GetDataMapName");
  return L"OIDDataMap";
}

HRESULT OIDDataMapper::GetValue(const wchar_t* name, VARIANT* value) {
  TraceScope trace(L"Corvane::OIDDataMapper::GetValue");
  const HRESULT stored = DataCollectionImpl::GetValue(name, value);
  if (stored == S_OK || !name || !*name || !value) return stored;

  Request request{std::wstring_view(name)};
  OIDDataItemSpec* const item = FindItem(&request);
  if (!item || !HasText(item->GetOid()) || !m_provider) return stored;
  _variant_t fetched;
  HRESULT result = E_FAIL;
  if (NextOIDDataItemSpec* const walk = item->GetNextOIDDataItemSpec()) {
    result = GetStep(*walk, request, &fetched);
  } else if (IsGroupMember(*item)) {
    result = GetGrouped(*item, name, &fetched);
  } else {
    result = GetAlone(*item, name, &fetched);
  }
  if (result == S_OK) MoveTo(std::move(fetched), value);
  return result;
}

// A dot may belong to the item's own name; then there is no suffix. Only walks have one.
OIDDataItemSpec* OIDDataMapper::FindItem(Request* request) {
  if (!m_spec) return nullptr;
  const auto find = [this](std::wstring_view name) {
    return dynamic_cast<OIDDataItemSpec*>(m_spec->GetDataItemSpec(std::wstring(name)));
  };
  if (OIDDataItemSpec* const item = find(request->rest)) {
    request->TakeNoSuffix();
    return item;
  }
  for (const std::size_t dot : {request->rest.find(L'.'), request->rest.rfind(L'.')}) {
    if (dot == std::wstring_view::npos) break;
    request->TakeSuffixAt(dot);
    OIDDataItemSpec* const item = find(request->name);
    if (item && item->GetNextOIDDataItemSpec()) return item;
  }
  return nullptr;
}

bool OIDDataMapper::Keep(const OIDDataItemSpec& item, const std::wstring& key, _variant_t* value) {
  if (IsNoOidValue(*value)) return false;
  *value = item.ConvertValue(std::move(*value));
  if (!item.IsTransient()) {
    StoreValue(key.c_str(), value, static_cast<unsigned int>(item.GetLifespan()));
  }
  return true;
}

HRESULT OIDDataMapper::GetAlone(const OIDDataItemSpec& item, const std::wstring& key,
                                _variant_t* value) {
  const HRESULT result = m_provider->GetValue(item.GetOid(), value);
  if (result != S_OK) return result;
  return Keep(item, key, value) ? S_OK : S_FALSE;
}

HRESULT OIDDataMapper::GetGrouped(const OIDDataItemSpec& item, const wchar_t* name,
                                  _variant_t* value) {
  const std::wstring key = ItemKey(item);
  if (DataCollectionImpl::GetValue(key.c_str(), value) == S_OK) return S_OK;
  const HRESULT result = ReadGroup(item, value);
  if (result == S_OK && key != name) {
    StoreValue(name, value, static_cast<unsigned int>(item.GetLifespan()));
  }
  return result;
}

std::vector<const OIDDataItemSpec*> OIDDataMapper::GroupOf(const OIDDataItemSpec& item) {
  const std::wstring_view group = item.GetGroup();
  std::vector<const OIDDataItemSpec*> members;
  m_spec->Begin();
  while (NexoDataItem* const each = m_spec->GetNextDataItemSpec()) {
    auto* const member = dynamic_cast<OIDDataItemSpec*>(each);
    if (member && IsGroupMember(*member) && member->GetGroup() == group) members.push_back(member);
  }
  return members;
}

HRESULT OIDDataMapper::ReadGroup(const OIDDataItemSpec& item, _variant_t* value) {
  static_assert(sizeof(_variant_t) == sizeof(VARIANT), "an array of one is an array of the other");
  const std::vector<const OIDDataItemSpec*> members = GroupOf(item);
  std::vector<const wchar_t*> oids;
  oids.reserve(members.size());
  for (const OIDDataItemSpec* const member : members) oids.push_back(member->GetOid());
  std::vector<_variant_t> values(members.size());
  const bool grouped =
      members.size() > 1 && SUCCEEDED(m_provider->GetMultipleValues(
                                oids.data(), values.data(), static_cast<unsigned>(oids.size())));
  if (!grouped) return GetAlone(item, ItemKey(item), value);
  for (std::size_t i = 0; i < members.size(); ++i) {
    const bool kept = Keep(*members[i], ItemKey(*members[i]), &values[i]);
    if (kept && members[i] == &item) *value = std::move(values[i]);
  }
  return value->vt == VT_EMPTY ? S_FALSE : S_OK;
}

HRESULT OIDDataMapper::GetStep(NextOIDDataItemSpec& item, const Request& request,
                               _variant_t* value) {
  const std::wstring base(request.prefixAndName);
  const int wanted = request.suffix ? WalkStepOf(*request.suffix) : 1;
  if (wanted == 0) return E_FAIL;
  const bool isStored =
      !request.suffix && DataCollectionImpl::GetValue(WalkStepKey(base, 1).c_str(), value) == S_OK;
  return isStored ? S_OK : Walk(item, base, wanted, value);
}

HRESULT OIDDataMapper::Walk(NextOIDDataItemSpec& item, const std::wstring& base, int wanted,
                            _variant_t* value) {
  const std::optional<Oid> root = ParseOid(item.GetOid());
  if (!root) return E_FAIL;
  const int allowed = item.IsUntilEnd() ? kMaxSteps : std::min(item.Count(), kMaxSteps);
  if (wanted > allowed) return S_FALSE;
  const int limit = item.IsTransient() ? wanted : allowed;

  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(kMaxWalkSeconds);
  std::wstring current = item.GetOid();
  Oid last = *root;
  std::vector<wchar_t> next(kMaxOidChars);
  HRESULT result = S_FALSE;
  int step = 1;
  for (; step <= limit; ++step) {
    if (std::chrono::steady_clock::now() > deadline) return result == S_OK ? S_OK : E_FAIL;
    _variant_t fetched;
    const HRESULT answered = m_provider->GetNextOidAndValue(
        current.c_str(), next.data(), static_cast<unsigned>(next.size()), &fetched);
    if (answered != S_OK) return result == S_OK ? S_OK : answered;
    next.back() = L'\0';
    std::optional<Oid> oid = ParseOid(next.data());
    if (!oid || !IsBelow(*oid, *root)) break;
    if (*oid <= last) return result;
    current = next.data();
    last = *std::move(oid);
    const bool kept = Keep(item, WalkStepKey(base, step), &fetched);
    if (step != wanted || !kept) continue;
    *value = std::move(fetched);
    result = S_OK;
  }
  ForgetStepsFrom(step, base);
  return result;
}

// What an earlier, longer walk left.
void OIDDataMapper::ForgetStepsFrom(int step, const std::wstring& base) {
  while (m_values.erase(WalkStepKey(base, step)) > 0) ++step;
}

}  // namespace Corvane
