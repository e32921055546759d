#include "host/snmp/mib_connection_netsnmp.h"

#include <algorithm>
#include <chrono>
#include <cwchar>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/exception_wall.h"
#include "base/utf8.h"
#include "corvane/error_codes.h"
#include "host/snmp/snmp_errors.h"
#include "host/snmp/snmp_group.h"
#include "host/snmp/snmp_session.h"

namespace Corvane::Host {
namespace {

using Clock = std::chrono::steady_clock;

// How long an operation may take, in times that one request may: looking up the name or asking for
// the engine ID comes before a request; and a group may take several.
constexpr int kRequestsOfOne = 2;
constexpr int kRequestsOfGroup = 4;

// What an agent does not answer, either.
const wchar_t* SilentRefusals(const SnmpOptions& options) {
  if (options.version != SnmpVersion::kV3) return L" (a wrong community looks the same)";
  const bool hasMore = !options.privacyPassphrase.empty() || !options.contextName.empty();
  return hasMore ? L" (a wrong privacy passphrase or context may look the same)" : L"";
}

class NetSnmpConnection final : public MIBConnection, public IDisposableImpl {
 public:
  NetSnmpConnection(const NetworkDevice& device, std::uint32_t port,
                    std::unique_ptr<SnmpIdentity> identity,
                    std::shared_ptr<LastFailure> lastFailure)
      : m_peer(device.Host() + L':' + std::to_wstring(port)),
        m_isVersion1(device.Snmp().version == SnmpVersion::kV1),
        m_silentRefusals(SilentRefusals(device.Snmp())),
        m_lastFailure(std::move(lastFailure)),
        m_timeout(device.Snmp().timeoutMs),
        m_tries(device.Snmp().retries + 1),
        m_session(ToUtf8(device.Host()), static_cast<std::uint16_t>(port), std::move(identity)) {}

  const char* GetTypeName() override { return "Corvane::Host::NetSnmpConnection"; }
  std::uint32_t AddRef() override { return AddRefImpl(); }
  std::uint32_t AddRefConst() override { return AddRefImpl(); }
  std::uint32_t Dispose() override { return DisposeImpl(); }
  std::uint32_t Release() override { return DisposeImpl(); }

  bool IsOpen() override;
  HRESULT GetValue(const wchar_t* oid, VARIANT* value) override;
  HRESULT GetMultipleValues(const wchar_t** oids, VARIANT* values, std::uint32_t count) override;
  HRESULT GetNextOidAndValue(const wchar_t* oid, wchar_t* nextOid, std::uint32_t nextOidChars,
                             VARIANT* value) override;
  HRESULT SetValue(const wchar_t* oid, VARIANT* value) override;
  HRESULT SetTimeout(std::uint32_t timeoutMs, std::uint32_t retries) override;
  void Close() override;

 private:
  // Runs `operation` on the open connection. No exception leaves it, and what the operation gives
  // as a reason becomes the address's last failure.
  template <typename Operation>
  HRESULT Run(Operation operation) noexcept;
  // The same for an operation on one OID, without an exchange when it is none.
  template <typename Operation>
  HRESULT RunOn(const wchar_t* oid, const wchar_t* verb, Operation operation) noexcept;
  HRESULT GetOne(const Oid& oid, VARIANT* value);
  HRESULT GetNext(const Oid& oid, wchar_t* nextOid, std::size_t nextOidChars, VARIANT* value);
  HRESULT GetGroup(const wchar_t** oids, VARIANT* values, std::size_t count, std::wstring* failure);
  SnmpPatience Patience(int requests) const;
  std::wstring Sentence(const std::wstring& what, HRESULT failure) const;

  const std::wstring m_peer;
  const bool m_isVersion1;
  const wchar_t* const m_silentRefusals;
  const std::shared_ptr<LastFailure> m_lastFailure;

  // Held during a whole operation: a second thread waits.
  std::mutex m_mutex;
  // Guarded by m_mutex.
  bool m_isOpen = true;
  std::chrono::milliseconds m_timeout;
  std::uint32_t m_tries;
  SnmpSession m_session;
  SnmpGroupSizes m_groupSizes;
};

// The one variable of an answer to a request for one.
const netsnmp_variable_list* OnlyVariable(const SnmpReply& reply) {
  const netsnmp_variable_list* const variable = reply.variables.get();
  return variable && !variable->next_variable ? variable : nullptr;
}

// None for what no message can carry.
std::optional<Oid> ParseOidName(std::wstring_view text) {
  std::optional<Oid> name = ParseOid(text);
  if (name && !IsEncodable(*name)) name.reset();
  return name;
}

Oid OidNameOf(const netsnmp_variable_list& variable) {
  return {variable.name, variable.name + variable.name_length};
}

HRESULT SnmpOutcome(const SnmpReply& reply) {
  if (FAILED(reply.result) || reply.errorStatus == SNMP_ERR_NOERROR) return reply.result;
  return ResultFromErrorStatus(reply.errorStatus);
}

template <typename Operation>
HRESULT NetSnmpConnection::Run(Operation operation) noexcept {
  return BehindWall<HRESULT>(E_OUTOFMEMORY, [&]() -> HRESULT {
    const std::lock_guard lock(m_mutex);
    std::wstring failure;
    const HRESULT result = m_isOpen ? operation(&failure) : ResultFromError(kErrorInvalidHandle);
    if (!m_isOpen) failure = Sentence(L"operation", result);
    m_lastFailure->Set(std::move(failure));
    return result;
  });
}

template <typename Operation>
HRESULT NetSnmpConnection::RunOn(const wchar_t* oid, const wchar_t* verb,
                                 Operation operation) noexcept {
  return Run([&](std::wstring* failure) {
    const std::optional<Oid> name = ParseOidName(oid);
    const HRESULT result = name ? operation(*name) : E_INVALIDARG;
    if (result != S_OK) *failure = Sentence(std::wstring(verb) + L' ' + oid, result);
    return result;
  });
}

std::wstring NetSnmpConnection::Sentence(const std::wstring& what, HRESULT failure) const {
  std::wstring sentence = L"SNMP " + what + L" at " + m_peer + L": " + SnmpReason(failure);
  if (failure != ResultFromError(kErrorTimeout)) return sentence;
  return sentence + L" after " + std::to_wstring((m_timeout * m_tries).count()) + L" ms" +
         m_silentRefusals;
}

SnmpPatience NetSnmpConnection::Patience(int requests) const {
  return {m_timeout, m_tries, Clock::now() + m_timeout * m_tries * requests};
}

bool NetSnmpConnection::IsOpen() {
  const std::lock_guard lock(m_mutex);
  return m_isOpen;
}

void NetSnmpConnection::Close() {
  const std::lock_guard lock(m_mutex);
  m_isOpen = false;
  m_session.Close();
}

HRESULT NetSnmpConnection::SetTimeout(std::uint32_t timeoutMs, std::uint32_t retries) {
  if (timeoutMs == 0 || timeoutMs > kMaxSnmpTimeoutMs || retries > kMaxSnmpRetries)
    return E_INVALIDARG;
  const std::lock_guard lock(m_mutex);
  m_timeout = std::chrono::milliseconds(timeoutMs);
  m_tries = retries + 1;
  return S_OK;
}

HRESULT NetSnmpConnection::GetValue(const wchar_t* oid, VARIANT* value) {
  if (!oid || !value) return E_POINTER;
  return RunOn(oid, L"get", [&](const Oid& name) { return GetOne(name, value); });
}

HRESULT NetSnmpConnection::GetOne(const Oid& oid, VARIANT* value) {
  const SnmpReply reply = m_session.Exchange({SNMP_MSG_GET, {&oid}}, Patience(kRequestsOfOne));
  if (const HRESULT outcome = SnmpOutcome(reply); FAILED(outcome)) return outcome;
  const netsnmp_variable_list* const variable = OnlyVariable(reply);
  if (!variable || OidNameOf(*variable) != oid) return ResultFromError(kErrorInvalidResponse);
  const SnmpDatum datum = DatumOf(*variable);
  return FAILED(datum.result) ? datum.result : StoreDatum(datum, value);
}

HRESULT NetSnmpConnection::GetNextOidAndValue(const wchar_t* oid, wchar_t* nextOid,
                                              std::uint32_t nextOidChars, VARIANT* value) {
  if (!oid || !nextOid || !value) return E_POINTER;
  return RunOn(oid, L"get-next",
               [&](const Oid& name) { return GetNext(name, nextOid, nextOidChars, value); });
}

HRESULT NetSnmpConnection::GetNext(const Oid& oid, wchar_t* nextOid, std::size_t nextOidChars,
                                   VARIANT* value) {
  const SnmpReply reply = m_session.Exchange({SNMP_MSG_GETNEXT, {&oid}}, Patience(kRequestsOfOne));
  // How version 1 says that nothing follows (RFC 1157, 4.1.3).
  if (m_isVersion1 && reply.errorStatus == SNMP_ERR_NOSUCHNAME) return kSnmpEndOfMibView;
  if (const HRESULT outcome = SnmpOutcome(reply); FAILED(outcome)) return outcome;
  const netsnmp_variable_list* const variable = OnlyVariable(reply);
  if (!variable) return ResultFromError(kErrorInvalidResponse);
  const SnmpDatum datum = DatumOf(*variable);
  if (FAILED(datum.result)) return datum.result;
  const Oid next = OidNameOf(*variable);
  if (next <= oid) return ResultFromError(kErrorInvalidResponse);
  const std::wstring text = FormatOid(next);
  if (text.size() >= nextOidChars) return E_OUTOFMEMORY;
  const HRESULT stored = StoreDatum(datum, value);
  if (SUCCEEDED(stored)) std::wmemcpy(nextOid, text.c_str(), text.size() + 1);
  return stored;
}

HRESULT NetSnmpConnection::SetValue(const wchar_t* oid, VARIANT* value) {
  if (!oid || !value) return E_POINTER;
  return RunOn(oid, L"set", [&](const Oid& name) {
    SnmpSetting setting;
    if (const HRESULT usable = SettingFrom(*value, &setting); FAILED(usable)) return usable;
    // Sent once: an agent whose answer was lost would do it again.
    SnmpPatience patience = Patience(kRequestsOfOne);
    patience.timeout *= std::exchange(patience.tries, 1);
    return SnmpOutcome(m_session.Exchange({SNMP_MSG_SET, {&name}, &setting}, patience));
  });
}

HRESULT NetSnmpConnection::GetMultipleValues(const wchar_t** oids, VARIANT* values,
                                             std::uint32_t count) {
  if (!oids || !values) return E_POINTER;
  if (count == 0) return E_INVALIDARG;
  return Run([&](std::wstring* failure) { return GetGroup(oids, values, count, failure); });
}

HRESULT NetSnmpConnection::GetGroup(const wchar_t** oids, VARIANT* values, std::size_t count,
                                    std::wstring* failure) {
  std::vector<std::optional<Oid>> names;
  std::vector<const Oid*> wanted;
  for (std::size_t i = 0; i < count; ++i) names.push_back(ParseOidName(OrEmpty(oids[i])));
  for (const std::optional<Oid>& name : names) {
    if (name) wanted.push_back(&*name);
  }
  const auto ask = [this](const SnmpRequest& request, const SnmpPatience& patience) {
    return m_session.Exchange(request, patience);
  };
  const std::vector<SnmpDatum> data =
      SnmpGroupRead(ask, Patience(kRequestsOfGroup), &m_groupSizes, wanted).Run();
  const auto came = [](const SnmpDatum& datum) { return datum.result == S_OK; };
  const auto valueCount = static_cast<std::size_t>(std::count_if(data.begin(), data.end(), came));
  if (valueCount < count) {
    const auto first = std::find_if_not(data.begin(), data.end(), came);
    const HRESULT reason = first == data.end() ? E_INVALIDARG : first->result;
    std::wstring what = L"get of " + std::to_wstring(count) + L" OIDs";
    if (first != data.end()) {
      what += L" (" + std::to_wstring(count - valueCount) + L" without a value, as " +
              FormatOid(*wanted[static_cast<std::size_t>(first - data.begin())]) + L')';
    }
    *failure = Sentence(what, reason);
    if (valueCount == 0) return reason;
  }
  auto datum = data.begin();
  HRESULT result = S_OK;
  for (std::size_t i = 0; i < count; ++i) {
    const bool filled = names[i] && came(*datum) && SUCCEEDED(StoreDatum(*datum, &values[i]));
    if (names[i]) ++datum;
    if (filled) continue;
    VariantClear(&values[i]);
    result = S_FALSE;
  }
  return result;
}

}  // namespace

MIBConnection* MakeNetSnmpConnection(const NetworkDevice& device,
                                     std::shared_ptr<LastFailure> lastFailure) {
  const std::uint32_t port = device.MappedPort(kSnmpPort);
  auto identity = std::make_unique<SnmpIdentity>();
  if (const std::wstring fault = identity->Set(device.Snmp()); !fault.empty()) {
    lastFailure->Set(L"SNMP at " + device.Host() + L": " + fault);
    return nullptr;
  }
  return new NetSnmpConnection(device, port, std::move(identity), std::move(lastFailure));
}

}  // namespace Corvane::Host
