#include "tests/support/peers/ippeveprinter.h"

#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <string_view>
#include <utility>

#include "tests/support/peers/loopback_server.h"

namespace Corvane::Test {
namespace {

constexpr auto kStartTimeout = std::chrono::seconds(20);
constexpr int kStarts = 5;  // another process may take the port between choosing and binding it

// The printer ends at once when it finds no system bus, though it has nothing to say on it. A bus
// of the test's own is enough, and nothing on the machine is asked or told.
constexpr char kBusConfiguration[] =
    "<!DOCTYPE busconfig PUBLIC '-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN' "
    "'http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd'>\n"
    "<busconfig><listen>unix:path=@FOLDER@/bus</listen><auth>EXTERNAL</auth>"
    "<policy context='default'><allow own='*'/><allow send_destination='*'/>"
    "<allow receive_sender='*'/></policy>"
    "</busconfig>\n";

// A shell's command in the folder; servers are not in every user's PATH.
pid_t Spawn(const std::string& folder, const std::string& command) {
  const std::string line =
      "cd '" + folder + "' && PATH=\"$PATH:/usr/sbin:/sbin\" HOME='" + folder + "' " + command;
  const pid_t parent = getpid();
  const pid_t process = fork();
  if (process == 0) {  // only what a signal handler may call
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(1);
    execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
    _exit(127);
  }
  return process;
}

void End(pid_t* process) {
  if (*process <= 0) return;
  kill(*process, SIGKILL);
  waitpid(std::exchange(*process, -1), nullptr, 0);
}

// Leaves what ended to be waited for: its number is nobody else's until then.
bool Runs(pid_t process) {
  siginfo_t ended{};
  return process > 0 &&
         waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 &&
         ended.si_pid == 0;
}

// Asks until it is so; false when the process ended, or the time is up.
template <typename Question>
bool Await(pid_t process, Question question) {
  const auto end = std::chrono::steady_clock::now() + kStartTimeout;
  while (Runs(process) && std::chrono::steady_clock::now() < end) {
    if (question()) return true;
    poll(nullptr, 0, 10);
  }
  return false;
}

bool Connects(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof(address.sun_path)) return false;
  path.copy(address.sun_path, path.size());
  const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool connected =
      connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
  close(client);
  return connected;
}

std::string Content(const std::filesystem::path& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace

Ippeveprinter::~Ippeveprinter() {
  End(&m_printer);
  End(&m_bus);
}

bool Ippeveprinter::Start(const std::string& options, std::uint16_t port) {
  std::filesystem::create_directories(SpoolFolder());
  if (!StartBus()) {
    m_failure = "dbus-daemon (Debian's package dbus-daemon) did not start: ";
    m_failure += Content(m_folder.Path() / "bus.log");
    return false;
  }
  for (int start = 0; start < kStarts; ++start) {
    m_port = port;
    if (port == 0) close(ListenOnLoopback(1, &m_port));  // free, and not soon given to another
    if (StartPrinter(options)) return true;
    End(&m_printer);
  }
  m_failure = "ippeveprinter (Debian's package cups-ipp-utils) did not start: ";
  m_failure += Content(m_folder.Path() / "printer.log");
  return false;
}

bool Ippeveprinter::StartBus() {
  const std::string folder = m_folder.Path().string();
  std::string configuration = kBusConfiguration;
  constexpr std::string_view kMark = "@FOLDER@";
  configuration.replace(configuration.find(kMark), kMark.size(), folder);
  m_folder.Write("bus.conf", configuration);
  m_bus = Spawn(folder, "exec dbus-daemon --nofork --config-file=bus.conf >bus.log 2>&1");
  return Await(m_bus, [&] { return Connects(folder + "/bus"); });
}

bool Ippeveprinter::StartPrinter(const std::string& options) {
  const std::string folder = m_folder.Path().string();
  m_printer = Spawn(folder, "DBUS_SYSTEM_BUS_ADDRESS='unix:path=" + folder +
                                "/bus' exec stdbuf -oL ippeveprinter -n localhost -p " +
                                std::to_string(m_port) + " -r off -d spool -k -v " + options +
                                " Printer </dev/null >printer.log 2>&1");
  // It says its name only once both its sockets are bound: then it is not another who answers.
  return Await(m_printer, [&] {
    return Content(m_folder.Path() / "printer.log").find("printer-uuid=") != std::string::npos &&
           AnswersHttp(m_port);
  });
}

}  // namespace Corvane::Test
