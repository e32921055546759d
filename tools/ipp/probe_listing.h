// What "corvane probe" prints.
#ifndef CORVANE_TOOLS_IPP_PROBE_LISTING_H_
#define CORVANE_TOOLS_IPP_PROBE_LISTING_H_

#include <vector>

#include "tools/ipp/probe.h"
#include "tools/output/failure.h"

namespace Corvane::Tool {

// As text a line for each protocol with tabs between its fields, escaped: protocol, port, "yes" or
// "no", model, serial number, UUID, name, and the state or what went wrong; "-" for what is not
// known. As JSON an array of objects, with null for that. The status is kNoAnswer when no protocol
// answers.
CommandResult ListFindings(const std::vector<Finding>& findings, bool json);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_IPP_PROBE_LISTING_H_
