#include "tools/options/snmp_secrets.h"

#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

#include "base/utf8.h"
#include "tools/options/secret_file.h"

namespace Corvane::Tool {
namespace {

struct Secret {
  const char* variable;
  std::string_view word;
  std::optional<std::wstring> SnmpSecrets::*member;
};

constexpr Secret kSecrets[] = {
    {"CORVANE_SNMP_COMMUNITY", "community", &SnmpSecrets::community},
    {"CORVANE_SNMP_AUTH_PASSPHRASE", "auth-passphrase", &SnmpSecrets::authPassphrase},
    {"CORVANE_SNMP_PRIV_PASSPHRASE", "priv-passphrase", &SnmpSecrets::privacyPassphrase},
};

}  // namespace

SnmpSecrets SecretsOfEnvironment() {
  SnmpSecrets secrets;
  for (const Secret& secret : kSecrets) {
    const char* const text = std::getenv(secret.variable);
    if (text && *text) secrets.*secret.member = ToWide(text);
  }
  return secrets;
}

SnmpSecrets SecretsOfFile(const std::string& path) {
  std::vector<std::string_view> words;
  for (const Secret& secret : kSecrets) words.push_back(secret.word);
  SnmpSecrets secrets;
  auto found = ReadSecretFile("--snmp-secrets", path, words);
  for (const Secret& secret : kSecrets) {
    const auto entry = found.find(secret.word);
    if (entry != found.end()) secrets.*secret.member = std::move(entry->second);
  }
  return secrets;
}

}  // namespace Corvane::Tool
