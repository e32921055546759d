// The part of the command line that says how a device on the network is reached.
#ifndef CORVANE_TOOLS_OPTIONS_NETWORK_OPTIONS_H_
#define CORVANE_TOOLS_OPTIONS_NETWORK_OPTIONS_H_

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "tools/options/options.h"

namespace Corvane::Tool {

class NetworkOptionReader {
 public:
  // The reader must outlive the parsing of `command`.
  void AddTo(CLI::App& command);
  void AddSnmpTo(CLI::App& command);

  // What the arguments said, once they are parsed. Throws Failure with kBadUsage.
  NetworkArguments Take() const;

 private:
  std::vector<std::string> m_ports;
  std::vector<std::string> m_tlsPorts;
  std::string m_caFile;
  std::string m_timeoutSeconds;
  SnmpArguments m_snmp;
};

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_OPTIONS_NETWORK_OPTIONS_H_
