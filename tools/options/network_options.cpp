#include "tools/options/network_options.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/decimal.h"
#include "tools/output/failure.h"

namespace Corvane::Tool {
namespace {

constexpr std::uint32_t kLastPort = 65535;
constexpr double kMaxTimeoutSeconds = 24 * 60 * 60;  // keeps the milliseconds within 32 bits

std::uint32_t ParsePort(std::string_view text, const std::string& argument) {
  const std::uint64_t port = ParseDigits(text, kLastPort).value_or(0);
  if (port == 0) ThrowUsage(argument + ": a port is a number from 1 to 65535");
  return static_cast<std::uint32_t>(port);
}

std::uint32_t ParseTimeoutMs(std::string_view text) {
  double seconds = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, seconds);
  if (error != std::errc() || stop != end || !(seconds >= 0.001 && seconds <= kMaxTimeoutSeconds)) {
    ThrowUsage("--timeout: expected seconds from 0.001 to 86400");
  }
  return static_cast<std::uint32_t>(std::lround(seconds * 1000));
}

}  // namespace

void NetworkOptionReader::AddTo(CLI::App& command) {
  constexpr char kGroup[] = "Devices on the network";
  // A repeated option takes one argument a time: what follows is a name.
  command
      .add_option("--port", m_ports,
                  "connect to TO instead of the protocol's port FROM (QUARN 8080, WS 7627, "
                  "PLSXML 80, SNMP 161, IPP 631 and with TLS 443)")
      ->type_name("FROM=TO")
      ->allow_extra_args(false)
      ->group(kGroup);
  command.add_option("--tls", m_tlsPorts, "speak TLS where the protocol's port is PORT")
      ->type_name("PORT")
      ->allow_extra_args(false)
      ->group(kGroup);
  command.add_option("--cacert", m_caFile, "trust these certificates (PEM) only")
      ->type_name("FILE")
      ->group(kGroup);
  command
      .add_option("--timeout", m_timeoutSeconds,
                  "the longest that one exchange may take; SNMP tries three times, and waits a "
                  "third of it each time")
      ->type_name("SECONDS")
      ->group(kGroup);
}

void NetworkOptionReader::AddSnmpTo(CLI::App& command) {
  const auto add = [&command](const char* name, std::string& value, const char* type,
                              const char* text) {
    command.add_option(name, value, text)->type_name(type)->group("SNMP");
  };
  add("--snmp-version", m_snmp.version, "VERSION", "1, 2c or 3; 2c unless given");
  add("--snmp-user", m_snmp.user, "NAME", "version 3: the user");
  add("--snmp-auth", m_snmp.auth, "PROTOCOL",
      "version 3: MD5, SHA, SHA-224, SHA-256, SHA-384 or SHA-512; SHA unless given");
  add("--snmp-priv", m_snmp.privacy, "PROTOCOL",
      "version 3: DES, AES, AES-192 or AES-256; AES unless given");
  add("--snmp-context", m_snmp.context, "NAME", "version 3: the context");
  add("--snmp-secrets", m_snmp.secretsFile, "FILE",
      "take community and passphrases from here instead of from the environment");
}

NetworkArguments NetworkOptionReader::Take() const {
  NetworkArguments arguments;
  for (const std::string& text : m_ports) {
    const std::size_t equals = text.find('=');
    const std::string argument = "--port " + text;
    if (equals == std::string::npos) ThrowUsage(argument + ": expected FROM=TO");
    const std::uint32_t from = ParsePort(std::string_view(text).substr(0, equals), argument);
    arguments.portMap[from] = ParsePort(std::string_view(text).substr(equals + 1), argument);
  }
  for (const std::string& text : m_tlsPorts) {
    arguments.tlsPorts.insert(ParsePort(text, "--tls " + text));
  }
  arguments.caFile = m_caFile;
  if (!m_timeoutSeconds.empty()) arguments.timeoutMs = ParseTimeoutMs(m_timeoutSeconds);
  arguments.snmp = m_snmp;
  return arguments;
}

}  // namespace Corvane::Tool
