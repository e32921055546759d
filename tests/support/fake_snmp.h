// A scripted SNMP session: it answers from a table of OIDs and records every call.
#ifndef CORVANE_TESTS_SUPPORT_FAKE_SNMP_H_
#define CORVANE_TESTS_SUPPORT_FAKE_SNMP_H_

#include <map>
#include <string>
#include <vector>

#include "base/oid.h"
#include "core/text.h"
#include "corvane/mib_connection.h"
#include "tests/support/counted.h"
#include "tests/support/dom.h"

namespace Corvane::Test {

// Lives where a test declares it, whose reference is the first: the count alone never destroys it.
class FakeSnmp final : public Counted<MIBConnection> {
 public:
  static constexpr wchar_t kProbe[] = L"1.3.6.1.2.1.25.3.2.1.3.1";
  static constexpr HRESULT kNoSuchName = static_cast<HRESULT>(0x80041002);
  static constexpr HRESULT kEndOfMib = static_cast<HRESULT>(0x80041003);

  FakeSnmp() {
    SetNoDelete(true);
    AddRef();
    Serve(kProbe, L"A printer");
  }

  std::map<Oid, std::wstring> values;  // as TextOf writes them
  // What follows an OID in a walk, instead of the next in the table.
  std::map<std::wstring, std::wstring> next;
  HRESULT groupResult = S_OK;  // of GetMultipleValues
  HRESULT setResult = S_OK;
  std::vector<std::wstring> calls;  // "Get 1.3", "GetMany 1.3 1.4", "GetNext 1.3", "Set 1.3"
  _variant_t lastSet;

  void Serve(const std::wstring& oid, const std::wstring& value) {
    values[ParseOid(oid).value()] = value;
  }

  bool IsOpen() override { return true; }
  HRESULT GetValue(const wchar_t* oid, VARIANT* value) override {
    calls.push_back(std::wstring(L"Get ") + oid);
    return Find(oid, value) ? S_OK : kNoSuchName;
  }
  HRESULT GetMultipleValues(const wchar_t** oids, VARIANT* out, std::uint32_t count) override {
    std::wstring call = L"GetMany";
    HRESULT result = groupResult;
    for (std::uint32_t i = 0; i < count; ++i) {
      call.append(L" ").append(oids[i]);
      if (SUCCEEDED(groupResult) && !Find(oids[i], &out[i])) result = S_FALSE;
    }
    calls.push_back(call);
    return result;
  }
  HRESULT GetNextOidAndValue(const wchar_t* oid, wchar_t* nextOid, std::uint32_t nextOidChars,
                             VARIANT* value) override {
    calls.push_back(std::wstring(L"GetNext ") + oid);
    std::uint32_t required = 0;
    if (const auto scripted = next.find(oid); scripted != next.end()) {
      *value = _variant_t(L"scripted").Detach();
      return CopyToBuffer(scripted->second, nextOid, nextOidChars, &required);
    }
    const auto entry = values.upper_bound(ParseOid(oid).value());
    if (entry == values.end()) return kEndOfMib;
    *value = ValueOf(entry->second).Detach();
    return CopyToBuffer(FormatOid(entry->first), nextOid, nextOidChars, &required);
  }
  HRESULT SetValue(const wchar_t* oid, VARIANT* value) override {
    calls.push_back(std::wstring(L"Set ") + oid);
    lastSet = *value;
    return setResult;
  }
  HRESULT SetTimeout(std::uint32_t, std::uint32_t) override { return S_OK; }
  void Close() override {}

 private:
  bool Find(const wchar_t* oid, VARIANT* value) {
    const auto parsed = ParseOid(oid);
    const auto entry = parsed ? values.find(*parsed) : values.end();
    if (entry == values.end()) return false;
    *value = ValueOf(entry->second).Detach();
    return true;
  }
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_FAKE_SNMP_H_
