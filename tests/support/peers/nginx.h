// A real nginx for a test, on loopback ports of its own with a temporary folder of its own (Linux).
#ifndef CORVANE_TESTS_SUPPORT_PEERS_NGINX_H_
#define CORVANE_TESTS_SUPPORT_PEERS_NGINX_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/child_process.h"
#include "tests/support/temp_folder.h"

namespace Corvane::Test {

// The folder "root" in Folder() is the document root.
class Nginx {
 public:
  const TempFolder& Folder() const { return m_folder; }
  // Starts it with these server blocks, in which "@PORT0@", "@PORT1@" ... stand for address and
  // port, and waits until each of `portCount` ports answers. False, with the reason in Failure(),
  // when it does not.
  bool Start(std::string servers, std::size_t portCount);
  std::uint16_t Port(std::size_t index) const { return m_ports.at(index); }
  const std::string& Failure() const { return m_failure; }

 private:
  TempFolder m_folder;
  std::vector<std::uint16_t> m_ports;
  std::optional<ChildProcess> m_process;
  std::string m_failure;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_PEERS_NGINX_H_
