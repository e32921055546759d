// "corvane probe": which protocols a device answers, and as whom.
#ifndef CORVANE_TOOLS_IPP_PROBE_H_
#define CORVANE_TOOLS_IPP_PROBE_H_

#include <cstdint>
#include <string>
#include <vector>

#include "tools/options/options.h"
#include "tools/output/failure.h"

namespace Corvane::Tool {

// What one protocol tells. Texts are UTF-8 and the device's own, not escaped; what it does not tell
// is empty.
struct Finding {
  const char* protocol = nullptr;
  std::uint32_t port = 0;  // connected to
  bool answers = false;
  std::string model;
  std::string serial;
  std::string uuid;     // of IPP
  std::string name;     // of IPP the printer's, of SNMP the host's
  std::string state;    // of IPP
  std::string problem;  // escaped, in one line: why it does not answer, or not with an identity
};

// QUARN, WS, PLSXML, SNMP, IPP, in this order, asked at the same time. A silent device costs one
// exchange's time-out, 3 seconds unless the options say otherwise. Throws Failure with kBadUsage.
std::vector<Finding> Probe(const Options& options);

// As text a line for each protocol with tabs between its fields, escaped: protocol, port, "yes" or
// "no", model, serial number, UUID, name, and the state or what went wrong; "-" for what is not
// known. As JSON an array of objects, with null for that. The status is kNoAnswer when no protocol
// answers.
CommandResult ListFindings(const std::vector<Finding>& findings, bool json);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_IPP_PROBE_H_
