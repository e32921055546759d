#include "tests/support/peers/snmpd.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <utility>

#include "tests/support/peers/udp_relay.h"

namespace Corvane::Test {
namespace {

constexpr auto kStartTimeout = std::chrono::seconds(20);
constexpr int kStarts = 5;  // another process may take the port between choosing and binding it

// A version 3 message without a user: every agent answers it, whatever its users and communities.
constexpr unsigned char kProbe[] = {
    0x30, 0x38,                                            // SEQUENCE
    0x02, 0x01, 0x03,                                      // version 3
    0x30, 0x0D, 0x02, 0x01, 0x01, 0x02, 0x02, 0x05, 0xDC,  // id 1, at most 1500 bytes,
    0x04, 0x01, 0x04, 0x02, 0x01, 0x03,                    // reportable, user-based security
    0x04, 0x10, 0x30, 0x0E, 0x04, 0x00, 0x02, 0x01, 0x00,  // no engine, boots 0,
    0x02, 0x01, 0x00, 0x04, 0x00, 0x04, 0x00, 0x04, 0x00,  // time 0, no user and parameters
    0x30, 0x12, 0x04, 0x00, 0x04, 0x00,                    // no context
    0xA0, 0x0C, 0x02, 0x02, 0x00, 0x01,                    // get 1
    0x02, 0x01, 0x00, 0x02, 0x01, 0x00, 0x30, 0x00};       // of nothing

}  // namespace

Snmpd::~Snmpd() { End(); }

void Snmpd::End() {
  if (m_process <= 0) return;
  kill(m_process, SIGKILL);  // it keeps nothing
  waitpid(std::exchange(m_process, -1), nullptr, 0);
}

bool Snmpd::Start(const std::string& configuration) {
  m_folder.Write("snmpd.conf", configuration + '\n');
  for (int start = 0; start < kStarts; ++start) {
    close(BindToLoopback(&m_port));  // free again, and not soon given to another
    if (Run()) return true;
  }
  return false;
}

bool Snmpd::Restart(const std::string& configuration) {
  End();
  m_folder.Write("snmpd.conf", configuration + '\n');
  return Run();
}

bool Snmpd::Run() {
  const std::string folder = m_folder.Path().string();
  // Servers are not in every user's PATH.
  const std::string command = "cd '" + folder +
                              "' && PATH=\"$PATH:/usr/sbin:/sbin\" SNMP_PERSISTENT_DIR='" + folder +
                              "/state' SNMPCONFPATH='" + folder +
                              "' MIBS= exec snmpd -f -C -c snmpd.conf -Lf log -I -smux "
                              "udp:127.0.0.1:" +
                              std::to_string(m_port) + " >output 2>&1";
  const pid_t parent = getpid();
  m_process = fork();
  if (m_process == 0) {  // only what a signal handler may call
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(1);
    execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
    _exit(127);
  }
  if (Answers()) return true;
  End();
  m_failure = "snmpd (Debian's package snmpd) did not start: " + Log();
  return false;
}

// False, too, when the process ended.
bool Snmpd::Answers() const {
  const int client = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  const sockaddr_in agent = LoopbackAddress(m_port);
  connect(client, reinterpret_cast<const sockaddr*>(&agent), sizeof(agent));
  const auto end = std::chrono::steady_clock::now() + kStartTimeout;
  bool answered = false;
  while (!answered && std::chrono::steady_clock::now() < end &&
         waitpid(m_process, nullptr, WNOHANG) == 0) {
    send(client, kProbe, sizeof(kProbe), 0);  // refused until it listens
    pollfd polled{client, POLLIN, 0};
    char byte = 0;
    answered = poll(&polled, 1, 50) > 0 && recv(client, &byte, 1, 0) == 1;
    if (!answered) poll(nullptr, 0, 10);
  }
  close(client);
  return answered;
}

std::string Snmpd::Log() const {
  std::string text;
  for (const char* const name : {"output", "log"}) {
    std::ifstream file(m_folder.Path() / name);
    text.append(std::istreambuf_iterator<char>(file), {});
  }
  return text;
}

}  // namespace Corvane::Test
