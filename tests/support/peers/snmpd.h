// A real SNMP agent for a test, on a loopback port of its own with a temporary folder of its own
// (Linux).
#ifndef CORVANE_TESTS_SUPPORT_PEERS_SNMPD_H_
#define CORVANE_TESTS_SUPPORT_PEERS_SNMPD_H_

#include <cstdint>
#include <optional>
#include <string>

#include "tests/support/child_process.h"
#include "tests/support/temp_folder.h"

namespace Corvane::Test {

class Snmpd {
 public:
  // Starts it with these lines of snmpd.conf and waits until it answers. False, with the reason in
  // Failure(), when it does not. The lines give "rocommunity public" or "rwcommunity private",
  // users ("createUser reader SHA passphrase" and "rouser reader"), and values by "override OID
  // TYPE VALUE".
  bool Start(const std::string& configuration);
  // Ends it and starts it on the same port with other lines. It has forgotten what it was set to,
  // its engine ID and its starts.
  bool Restart(const std::string& configuration);
  std::uint16_t Port() const { return m_port; }
  const std::string& Failure() const { return m_failure; }

 private:
  bool Run();

  TempFolder m_folder;
  std::uint16_t m_port = 0;
  std::optional<ChildProcess> m_process;
  std::string m_failure;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_PEERS_SNMPD_H_
