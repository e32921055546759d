// A real IPP printer for a test, on a loopback port with a temporary folder of its own
// (Linux).
#ifndef CORVANE_TESTS_SUPPORT_PEERS_IPPEVEPRINTER_H_
#define CORVANE_TESTS_SUPPORT_PEERS_IPPEVEPRINTER_H_

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "tests/support/temp_folder.h"

namespace Corvane::Test {

// Its resource is /ipp/print, it takes jobs without credentials and keeps their documents. It
// listens on localhost alone and announces itself to nobody. Ends its own processes, also when the
// test dies.
class Ippeveprinter {
 public:
  Ippeveprinter() = default;
  Ippeveprinter(const Ippeveprinter&) = delete;
  Ippeveprinter& operator=(const Ippeveprinter&) = delete;
  ~Ippeveprinter();

  // Starts it with more options of its command line ("-f application/pdf"), as the shell reads
  // them, and waits until it answers. False, with the reason in Failure(), when it does not. 0 is a
  // free port.
  bool Start(const std::string& options = {}, std::uint16_t port = 0);
  std::uint16_t Port() const { return m_port; }
  // Where it runs; for what its command needs.
  const TempFolder& Folder() const { return m_folder; }
  // Where it keeps the documents of its jobs.
  std::filesystem::path SpoolFolder() const { return m_folder.Path() / "spool"; }
  const std::string& Failure() const { return m_failure; }

 private:
  bool StartBus();
  bool StartPrinter(const std::string& options);

  TempFolder m_folder;
  std::uint16_t m_port = 0;
  pid_t m_bus = -1;
  pid_t m_printer = -1;
  std::string m_failure;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_PEERS_IPPEVEPRINTER_H_
