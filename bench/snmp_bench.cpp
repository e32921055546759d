// Values over SNMP from a real snmpd on loopback, 20 short texts each time: one request against 20,
// and this host against bare net-snmp, which leaves the values in its own lists.
//
//   GroupOf20           MIBConnection::GetMultipleValues, one request
//   TwentyGets          MIBConnection::GetValue, 20 requests
//   GroupOf20V3         as GroupOf20, with version 3, SHA and AES
//   BareGroupOf20       snmp_sess_synch_response, one request
//   BareTwentyGets      snmp_sess_synch_response, 20 requests
//
// Most of the time is the agent's: the processor time is this process's alone.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <iterator>
#include <string>

#include "corvane/corvane.h"
#include "corvane/handles.h"
#include "host/network_address.h"
#include "host/snmp/netsnmp.h"
#include "tests/support/peers/snmpd.h"

namespace {

using Corvane::RefPtr;

constexpr std::size_t kValues = 20;
constexpr oid kBase[] = {1, 3, 6, 1, 4, 1, 99999, 1};

// The agent of all the benchmarks.
Corvane::Test::Snmpd& Agent() {
  static Corvane::Test::Snmpd agent;
  return agent;
}

bool StartAgent() {
  std::string configuration =
      "rocommunity public\ncreateUser bench SHA bench-secret AES bench-secret\nrouser bench priv\n";
  for (std::size_t i = 0; i < kValues; ++i) {
    configuration += "override 1.3.6.1.4.1.99999.1." + std::to_string(i) + " octet_str \"value " +
                     std::to_string(i) + "\"\n";
  }
  return Agent().Start(configuration);
}

class Session {
 public:
  explicit Session(bool isVersion3) {
    Corvane::Host::NetworkOptions options;
    options.host = L"127.0.0.1";
    options.portMap = {{161, Agent().Port()}};
    if (isVersion3) {
      options.snmp.version = Corvane::Host::SnmpVersion::kV3;
      options.snmp.user = L"bench";
      options.snmp.authPassphrase = options.snmp.privacyPassphrase = L"bench-secret";
    }
    m_address = RefPtr<Corvane::Address>(Corvane::Host::CreateNetworkAddress(options));
    m_address->GetMIBConnection(m_connection.Receive());
    for (std::size_t i = 0; i < kValues; ++i) {
      m_texts[i] = L"1.3.6.1.4.1.99999.1." + std::to_wstring(i);
      m_names[i] = m_texts[i].c_str();
    }
  }

  bool GetGroup() {
    return Cleared(m_connection->GetMultipleValues(m_names.data(), m_values.data(),
                                                   static_cast<unsigned>(kValues)) == S_OK);
  }
  bool GetEach() {
    bool got = true;
    for (std::size_t i = 0; i < kValues; ++i) {
      got = got && m_connection->GetValue(m_names[i], &m_values[i]) == S_OK;
    }
    return Cleared(got);
  }

 private:
  bool Cleared(bool got) {
    for (VARIANT& value : m_values) VariantClear(&value);
    return got;
  }

  RefPtr<Corvane::Address> m_address;
  RefPtr<Corvane::MIBConnection> m_connection;
  std::array<std::wstring, kValues> m_texts;
  std::array<const wchar_t*, kValues> m_names;
  std::array<VARIANT, kValues> m_values{};
};

// `get` says whether every value came.
template <typename Get>
void Measure(benchmark::State& state, Get get) {
  for (auto _ : state) {
    if (!get()) {
      state.SkipWithError("a value is missing");
      break;
    }
  }
}

void Run(benchmark::State& state, bool isVersion3, bool (Session::*get)()) {
  Session session(isVersion3);
  Measure(state, [&] { return (session.*get)(); });
}

// False when not every value came.
bool BareGet(void* session, std::size_t first, std::size_t count) {
  netsnmp_pdu* const request = snmp_pdu_create(SNMP_MSG_GET);
  for (std::size_t i = first; i < first + count; ++i) {
    oid name[std::size(kBase) + 1];
    std::copy(std::begin(kBase), std::end(kBase), name);
    name[std::size(kBase)] = i;
    snmp_add_null_var(request, name, std::size(name));
  }
  netsnmp_pdu* response = nullptr;
  std::size_t came = 0;
  if (snmp_sess_synch_response(session, request, &response) == STAT_SUCCESS) {
    for (const netsnmp_variable_list* v = response->variables; v; v = v->next_variable) {
      came += v->type == ASN_OCTET_STR ? 1 : 0;
    }
  }
  if (response) snmp_free_pdu(response);
  return came == count;
}

void RunBare(benchmark::State& state, std::size_t perRequest) {
  Session(false).GetEach();  // sets net-snmp up as the host does
  netsnmp_session settings;
  snmp_sess_init(&settings);
  std::string peer = "udp:127.0.0.1:" + std::to_string(Agent().Port());
  std::string community = "public";
  settings.version = SNMP_VERSION_2c;
  settings.peername = peer.data();
  settings.community = reinterpret_cast<u_char*>(community.data());
  settings.community_len = community.size();
  void* const session = snmp_sess_open(&settings);
  Measure(state, [session, perRequest] {
    bool got = session != nullptr;
    for (std::size_t i = 0; i < kValues; i += perRequest) {
      got = got && BareGet(session, i, perRequest);
    }
    return got;
  });
  if (session) snmp_sess_close(session);
}

template <typename... Arguments>
void Register(const char* name, Arguments... arguments) {
  benchmark::RegisterBenchmark(name, arguments...)->UseRealTime();
}

}  // namespace

int main(int argc, char** argv) {
  Register("GroupOf20", Run, false, &Session::GetGroup);
  Register("TwentyGets", Run, false, &Session::GetEach);
  Register("GroupOf20V3", Run, true, &Session::GetGroup);
  Register("BareGroupOf20", RunBare, kValues);
  Register("BareTwentyGets", RunBare, std::size_t{1});
  benchmark::Initialize(&argc, argv);
  if (!StartAgent()) {
    std::fprintf(stderr, "%s\n", Agent().Failure().c_str());
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
