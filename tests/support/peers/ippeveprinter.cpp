#include "tests/support/peers/ippeveprinter.h"

#include <unistd.h>

#include <vector>

#include "tests/support/peers/loopback_server.h"

namespace Corvane::Test {
namespace {

constexpr int kStarts = 5;  // another process may take the port between choosing and binding it

// The printer ends at once when it finds no system bus, though it has nothing to say on it. A bus
// of the test's own is enough, and nothing on the machine is asked or told.
std::string BusConfiguration(const std::string& address) {
  return "<!DOCTYPE busconfig PUBLIC '-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN' "
         "'http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd'>\n"
         "<busconfig><listen>" +
         address +
         "</listen><auth>EXTERNAL</auth><policy context='default'><allow own='*'/>"
         "<allow send_destination='*'/><allow receive_sender='*'/></policy></busconfig>\n";
}

}  // namespace

bool Ippeveprinter::Start(const std::string& options, std::uint16_t port) {
  const std::string folder = m_folder.Path().string();
  const std::string bus = "unix:path=" + folder + "/bus";
  std::filesystem::create_directories(SpoolFolder());
  m_folder.Write("bus.conf", BusConfiguration(bus));
  m_bus.emplace(std::vector<std::string>{"dbus-daemon", "--nofork", "--print-address",
                                         "--config-file=" + folder + "/bus.conf"});
  if (!m_bus->Await([this] { return !m_bus->Output().empty(); })) {
    m_failure = "dbus-daemon (Debian's package dbus-daemon) did not start: " + m_bus->Error();
    return false;
  }
  for (int start = 0; start < kStarts; ++start) {
    m_port = port;
    if (port == 0) close(ListenOnLoopback(1, &m_port));  // free, and not soon given to another
    m_printer.reset();
    m_printer.emplace(
        std::vector<std::string>{"/bin/sh", "-c",
                                 "PATH=\"$PATH:/usr/sbin\" exec stdbuf -oL ippeveprinter -n "
                                 "localhost -p " +
                                     std::to_string(m_port) + " -r off -d spool -k -v " + options +
                                     " Printer 2>&1"},
        ProcessOptions{.folder = folder,
                       .environment = {"DBUS_SYSTEM_BUS_ADDRESS=" + bus, "HOME=" + folder},
                       .endSignal = SIGKILL});
    // It says its name only once both its sockets are bound: then it is not another who answers.
    const auto answers = [this] {
      return m_printer->Output().find("printer-uuid=") != std::string::npos && AnswersHttp(m_port);
    };
    if (m_printer->Await(answers)) return true;
  }
  m_failure = "ippeveprinter (Debian's package cups-ipp-utils) did not start: ";
  m_failure += m_printer->Output();
  return false;
}

}  // namespace Corvane::Test
