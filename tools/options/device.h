// The device that the command line names.
#ifndef CORVANE_TOOLS_OPTIONS_DEVICE_H_
#define CORVANE_TOOLS_OPTIONS_DEVICE_H_

#include <string>

#include "corvane/address.h"
#include "corvane/handles.h"
#include "tools/options/options.h"

namespace Corvane::Tool {

bool IsRecorded(const Options& options);

// Throws Failure with kBadUsage for a malformed address, a folder that does not exist, and options
// that the kind of device does not have. Exchanges nothing with the device; the name of one on the
// network is looked up, and must be known.
RefPtr<Address> OpenDevice(const Options& options);

// Why its last exchange failed, escaped; empty when none has.
std::string LastFailureOf(Address& device);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_OPTIONS_DEVICE_H_
