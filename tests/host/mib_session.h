// SNMP sessions of tests, and what comes over them.
#ifndef CORVANE_TESTS_HOST_MIB_SESSION_H_
#define CORVANE_TESTS_HOST_MIB_SESSION_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/host/exchange.h"

namespace Corvane::Test {

inline Host::NetworkOptions AgentOptions(std::uint16_t port) {
  Host::NetworkOptions options = LoopbackOptions(0);
  options.portMap = {{kSnmpPort, port}};
  options.snmp.timeoutMs = 5'000;
  return options;
}

// The value as text, with its type: "i:5", "s:text", "empty".
inline std::string Shown(const VARIANT& value) {
  switch (value.vt) {
    case VT_I4:
      return "i:" + std::to_string(value.lVal);
    case VT_BSTR:
      return "s:" + ToUtf8({value.bstrVal, SysStringLen(value.bstrVal)});
    case VT_EMPTY:
      return "empty";
    default:
      return "type " + std::to_string(value.vt);
  }
}

class MibSession {
 public:
  explicit MibSession(const Host::NetworkOptions& options) : m_address(NetworkDevice(options)) {
    MIBConnection* made = reinterpret_cast<MIBConnection*>(this);  // must be overwritten
    m_opened = m_address->GetMIBConnection(&made);
    m_connection.reset(made);
  }

  MIBConnection* operator->() const { return m_connection.get(); }
  std::string Failure() const { return ToUtf8(m_address->GetLastFailure()); }

  std::string Get(const std::string& oid) const { return Read("get", {oid}); }
  // What comes of a "get", a "next" into room for so many characters, or a get of a "group": the
  // code where it is not S_OK, and the values as Shown, a next one behind its name. A failure must
  // leave alone what is there.
  std::string Read(const std::string& operation, const std::vector<std::string>& oids,
                   std::uint32_t room = 64) const {
    if (!m_connection) return HrText(m_opened);
    std::vector<std::wstring> texts;
    for (const std::string& oid : oids) texts.push_back(ToWide(oid));
    std::vector<const wchar_t*> names;
    for (const std::wstring& text : texts) names.push_back(text.c_str());
    std::vector<_variant_t> values(oids.size(), _variant_t(L"before"));
    wchar_t next[64] = L"";
    const auto shown = [&] {
      std::string all = ToUtf8(next);
      for (const _variant_t& value : values) all += (all.empty() ? "" : " ") + Shown(value);
      return all;
    };
    const std::string before = shown();
    const HRESULT result =
        operation == "get" ? m_connection->GetValue(names[0], values.data())
        : operation == "next"
            ? m_connection->GetNextOidAndValue(names[0], next, room, &values[0])
            : m_connection->GetMultipleValues(names.data(), values.data(),
                                              static_cast<std::uint32_t>(names.size()));
    if (SUCCEEDED(result)) return result == S_OK ? shown() : HrText(result) + ' ' + shown();
    EXPECT_EQ(shown(), before);
    return HrText(result);
  }
  // A number where the text begins with one.
  std::string Set(const std::string& oid, const std::string& text) const {
    const long number = std::atol(text.c_str());
    _variant_t value = number != 0 ? _variant_t(number) : _variant_t(ToWide(text).c_str());
    return HrText(m_connection->SetValue(ToWide(oid).c_str(), &value));
  }

 private:
  const Owned<Address> m_address;
  Owned<MIBConnection> m_connection;
  HRESULT m_opened = E_UNEXPECTED;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_HOST_MIB_SESSION_H_
