// How the command line says to speak SNMP.
#ifndef CORVANE_TOOLS_OPTIONS_SNMP_ARGUMENTS_H_
#define CORVANE_TOOLS_OPTIONS_SNMP_ARGUMENTS_H_

#include <cstdint>
#include <optional>
#include <string>

#include "host/common/network_options.h"

namespace Corvane::Tool {

// As given, in UTF-8; empty when not given.
struct SnmpArguments {
  std::string version;
  std::string user;
  std::string auth;
  std::string privacy;
  std::string context;
  std::string secretsFile;

  bool AnyGiven() const {
    return !version.empty() || !user.empty() || !auth.empty() || !privacy.empty() ||
           !context.empty() || !secretsFile.empty();
  }
};

// With the secrets of the file or the environment. `timeoutMs` bounds one exchange with all its
// tries. Throws Failure with kBadUsage, whose text holds no secret, for what does not go together
// and for secrets that cannot be had.
Host::SnmpOptions SnmpOptionsOf(const SnmpArguments& arguments,
                                std::optional<std::uint32_t> timeoutMs);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_OPTIONS_SNMP_ARGUMENTS_H_
