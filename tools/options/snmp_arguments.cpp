#include "tools/options/snmp_arguments.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include "base/utf8.h"
#include "tools/options/secret_file.h"
#include "tools/output/failure.h"

namespace Corvane::Tool {
namespace {

using Host::SnmpAuth;
using Host::SnmpPrivacy;
using Host::SnmpVersion;

constexpr std::size_t kMinPassphraseBytes = 8;  // RFC 3414, 11.2
constexpr std::size_t kMaxUserBytes = 32;       // RFC 3414, 2.1

template <typename Value>
struct Word {
  std::string_view word;
  Value value;
};

constexpr Word<SnmpVersion> kVersions[] = {
    {"1", SnmpVersion::kV1}, {"2c", SnmpVersion::kV2c}, {"3", SnmpVersion::kV3}};
constexpr Word<SnmpAuth> kAuths[] = {
    {"MD5", SnmpAuth::kMd5},        {"SHA", SnmpAuth::kSha},        {"SHA-224", SnmpAuth::kSha224},
    {"SHA-256", SnmpAuth::kSha256}, {"SHA-384", SnmpAuth::kSha384}, {"SHA-512", SnmpAuth::kSha512}};
constexpr Word<SnmpPrivacy> kPrivacies[] = {{"DES", SnmpPrivacy::kDes},
                                            {"AES", SnmpPrivacy::kAes},
                                            {"AES-192", SnmpPrivacy::kAes192},
                                            {"AES-256", SnmpPrivacy::kAes256}};

// Where a secret may stand: never on the command line, which other users can see.
struct Secret {
  const char* variable;
  std::string_view word;
  std::wstring Host::SnmpOptions::*member;
};

constexpr Secret kSecrets[] = {
    {"CORVANE_SNMP_COMMUNITY", "community", &Host::SnmpOptions::community},
    {"CORVANE_SNMP_AUTH_PASSPHRASE", "auth-passphrase", &Host::SnmpOptions::authPassphrase},
    {"CORVANE_SNMP_PRIV_PASSPHRASE", "priv-passphrase", &Host::SnmpOptions::privacyPassphrase},
};

// Without regard to case and hyphens: "sha256" is SHA-256.
std::string FoldedOption(std::string_view word) {
  std::string folded;
  for (const char c : word) {
    if (c != '-') folded += c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
  }
  return folded;
}

// `value` stays what it is for an empty text.
template <typename Value, std::size_t kCount>
void ChooseSnmpOption(const Word<Value> (&words)[kCount], const std::string& text,
                      const std::string& option, Value* value) {
  if (text.empty()) return;
  std::string known;
  for (const Word<Value>& each : words) {
    if (FoldedOption(each.word) == FoldedOption(text)) {
      *value = each.value;
      return;
    }
    known += (known.empty() ? "" : ", ") + std::string(each.word);
  }
  ThrowUsage(option + " " + text + ": expected one of " + known);
}

void RequirePassphrase(const std::wstring& passphrase, const std::string& kind) {
  if (!passphrase.empty() && ToUtf8(passphrase).size() < kMinPassphraseBytes) {
    ThrowUsage("the " + kind + " passphrase of SNMP has fewer than 8 bytes");
  }
}

// Where a secret is to be written, for a message.
std::string SecretPlacesOf(const std::string& variable, const std::string& word) {
  return "set " + variable + ", or write " + word + " into the file of --snmp-secrets";
}

void RequireVersion3(const SnmpArguments& arguments) {
  for (const auto& [option, text] : {std::pair{"--snmp-user", &arguments.user},
                                     {"--snmp-auth", &arguments.auth},
                                     {"--snmp-priv", &arguments.privacy},
                                     {"--snmp-context", &arguments.context}}) {
    if (!text->empty()) ThrowUsage(std::string(option) + " is for --snmp-version 3");
  }
}

void RequireUser(const SnmpArguments& arguments, const Host::SnmpOptions& options) {
  if (arguments.user.empty()) ThrowUsage("--snmp-version 3 needs a --snmp-user");
  if (arguments.user.size() > kMaxUserBytes) ThrowUsage("--snmp-user has more than 32 bytes");
  const bool signs = !options.authPassphrase.empty();
  const bool encrypts = !options.privacyPassphrase.empty();
  if (!signs && (encrypts || !arguments.auth.empty() || !arguments.privacy.empty())) {
    ThrowUsage("SNMP has no authentication passphrase: " +
               SecretPlacesOf("CORVANE_SNMP_AUTH_PASSPHRASE", "auth-passphrase"));
  }
  if (!encrypts && !arguments.privacy.empty()) {
    ThrowUsage("SNMP has no privacy passphrase: " +
               SecretPlacesOf("CORVANE_SNMP_PRIV_PASSPHRASE", "priv-passphrase"));
  }
}

// A file wins over the environment, where an empty variable counts as absent.
void TakeSecrets(const SnmpArguments& arguments, Host::SnmpOptions* options) {
  std::vector<std::string_view> words;
  for (const Secret& secret : kSecrets) words.push_back(secret.word);
  std::map<std::string_view, std::wstring> file;
  if (!arguments.secretsFile.empty()) {
    file = ReadSecretFile("--snmp-secrets", arguments.secretsFile, words);
  }
  for (const Secret& secret : kSecrets) {
    const bool isOfVersion3 = secret.member != &Host::SnmpOptions::community;
    if (isOfVersion3 != (options->version == SnmpVersion::kV3)) continue;
    const char* const variable = std::getenv(secret.variable);
    if (const auto entry = file.find(secret.word); entry != file.end()) {
      options->*secret.member = std::move(entry->second);
    } else if (variable && *variable) {
      options->*secret.member = ToWide(variable);
    }
  }
}

}  // namespace

Host::SnmpOptions SnmpOptionsOf(const SnmpArguments& arguments,
                                std::optional<std::uint32_t> timeoutMs) {
  Host::SnmpOptions options;
  ChooseSnmpOption(kVersions, arguments.version, "--snmp-version", &options.version);
  ChooseSnmpOption(kAuths, arguments.auth, "--snmp-auth", &options.auth);
  ChooseSnmpOption(kPrivacies, arguments.privacy, "--snmp-priv", &options.privacy);
  if (options.version != SnmpVersion::kV3) RequireVersion3(arguments);
  TakeSecrets(arguments, &options);
  if (options.version == SnmpVersion::kV3) RequireUser(arguments, options);
  RequirePassphrase(options.authPassphrase, "authentication");
  RequirePassphrase(options.privacyPassphrase, "privacy");
  options.user = ToWide(arguments.user);
  options.contextName = ToWide(arguments.context);
  if (timeoutMs) options.timeoutMs = std::max(1u, *timeoutMs / (options.retries + 1));
  return options;
}

}  // namespace Corvane::Tool
