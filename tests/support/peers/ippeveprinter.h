// A real IPP printer for a test, on a loopback port with a temporary folder of its own
// (Linux).
#ifndef CORVANE_TESTS_SUPPORT_PEERS_IPPEVEPRINTER_H_
#define CORVANE_TESTS_SUPPORT_PEERS_IPPEVEPRINTER_H_

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "tests/support/child_process.h"
#include "tests/support/temp_folder.h"

namespace Corvane::Test {

// Its resource is /ipp/print, it takes jobs without credentials and keeps their documents. It
// listens on localhost alone and announces itself to nobody.
class Ippeveprinter {
 public:
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
  TempFolder m_folder;
  std::uint16_t m_port = 0;
  std::optional<ChildProcess> m_bus;
  std::optional<ChildProcess> m_printer;
  std::string m_failure;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_PEERS_IPPEVEPRINTER_H_
