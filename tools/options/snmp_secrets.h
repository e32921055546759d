// Secrets of SNMP, which never stand on a command line: other users can see those.
#ifndef CORVANE_TOOLS_OPTIONS_SNMP_SECRETS_H_
#define CORVANE_TOOLS_OPTIONS_SNMP_SECRETS_H_

#include <optional>
#include <string>

namespace Corvane::Tool {

struct SnmpSecrets {
  std::optional<std::wstring> community;
  std::optional<std::wstring> authPassphrase;
  std::optional<std::wstring> privacyPassphrase;
};

// CORVANE_SNMP_COMMUNITY, CORVANE_SNMP_AUTH_PASSPHRASE, CORVANE_SNMP_PRIV_PASSPHRASE; an empty
// variable counts as absent.
SnmpSecrets SecretsOfEnvironment();

// Lines "community = TEXT", "auth-passphrase = TEXT", "priv-passphrase = TEXT"; see ReadSecretFile,
// whose failure it throws.
SnmpSecrets SecretsOfFile(const std::string& path);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_OPTIONS_SNMP_SECRETS_H_
