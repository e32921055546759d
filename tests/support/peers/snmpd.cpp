#include "tests/support/peers/snmpd.h"

#include <signal.h>
#include <unistd.h>

#include <vector>

#include "tests/support/peers/loopback_server.h"

namespace Corvane::Test {

bool Snmpd::Start(const std::string& configuration) {
  m_folder.Write("snmpd.conf", configuration + '\n');
  constexpr int kStarts = 5;  // another process may take the port between choosing and binding it
  for (int start = 0; start < kStarts; ++start) {
    m_port = 0;
    close(BindToLoopback(SOCK_DGRAM, &m_port));  // free again, and not soon given to another
    if (Run()) return true;
  }
  return false;
}

bool Snmpd::Restart(const std::string& configuration) {
  m_folder.Write("snmpd.conf", configuration + '\n');
  return Run();
}

bool Snmpd::Run() {
  const std::string folder = m_folder.Path().string();
  m_process.reset();
  const std::vector<std::string> command = {
      "snmpd", "-f",         "-C",
      "-c",    "snmpd.conf", "-Le",
      "-I",    "-smux",      "udp:127.0.0.1:" + std::to_string(m_port)};
  const std::vector<std::string> environment = {"SNMP_PERSISTENT_DIR=" + folder + "/state",
                                                "SNMPCONFPATH=" + folder, "MIBS="};
  // It writes its state at any other signal.
  m_process.emplace(
      command, ProcessOptions{.folder = folder, .environment = environment, .endSignal = SIGKILL});
  // It says its version once it has bound its port.
  if (m_process->Await(
          [this] { return m_process->Error().find("version") != std::string::npos; })) {
    return true;
  }
  m_failure = "snmpd (Debian's package snmpd) did not start: " + m_process->Error();
  m_process.reset();
  return false;
}

}  // namespace Corvane::Test
