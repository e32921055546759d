// SNMP sessions of tests, and what comes over them.
#ifndef CORVANE_TESTS_HOST_MIB_SESSION_H_
#define CORVANE_TESTS_HOST_MIB_SESSION_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/host/exchange.h"

namespace Corvane::Test {

inline Host::NetworkOptions AgentOptions(std::uint16_t port) {
  Host::NetworkOptions options;
  options.host = L"127.0.0.1";
  options.portMap = {{kSnmpPort, port}};
  options.snmp.timeoutMs = 5'000;
  return options;
}

// The value as text, with its type: "i:5", "s:text", "empty".
inline std::wstring Shown(const VARIANT& value) {
  switch (value.vt) {
    case VT_I4:
      return L"i:" + std::to_wstring(value.lVal);
    case VT_BSTR:
      return L"s:" + std::wstring(value.bstrVal, SysStringLen(value.bstrVal));
    case VT_EMPTY:
      return L"empty";
    default:
      return L"type " + std::to_wstring(value.vt);
  }
}

struct Read {
  HRESULT result = E_UNEXPECTED;
  std::wstring value;  // as Shown
};

class MibSession {
 public:
  explicit MibSession(const Host::NetworkOptions& options)
      : m_address(Host::CreateNetworkAddress(options)) {
    MIBConnection* made = reinterpret_cast<MIBConnection*>(this);  // must be overwritten
    m_opened = m_address->GetMIBConnection(&made);
    m_connection.reset(made);
  }

  MIBConnection* operator->() const { return m_connection.get(); }
  explicit operator bool() const { return m_connection != nullptr; }
  HRESULT Opened() const { return m_opened; }
  std::wstring Failure() const { return m_address->GetLastFailure(); }

  // A variant that holds something is what a failure must leave alone.
  Read Get(const std::wstring& oid) const {
    _variant_t value(L"before");
    Read read;
    read.result = m_connection->GetValue(oid.c_str(), &value);
    read.value = Shown(value);
    return read;
  }
  // The values of a group, apart by blanks.
  Read GetGroup(const std::vector<std::wstring>& oids) const {
    std::vector<const wchar_t*> names;
    for (const std::wstring& oid : oids) names.push_back(oid.c_str());
    std::vector<_variant_t> values(oids.size(), _variant_t(L"before"));
    Read read;
    read.result = m_connection->GetMultipleValues(names.data(), values.data(),
                                                  static_cast<std::uint32_t>(names.size()));
    for (const _variant_t& value : values) {
      read.value += (read.value.empty() ? L"" : L" ") + Shown(value);
    }
    return read;
  }
  HRESULT Set(const std::wstring& oid, _variant_t value) const {
    return m_connection->SetValue(oid.c_str(), &value);
  }

 private:
  const Owned<Address> m_address;
  Owned<MIBConnection> m_connection;
  HRESULT m_opened = E_UNEXPECTED;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_HOST_MIB_SESSION_H_
