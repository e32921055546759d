#include "tools/snmp_secrets.h"

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "tools/failure.h"
#include "tools/text_escape.h"
#include "tools/utf8.h"

namespace Corvane::Tool {
namespace {

namespace fs = std::filesystem;

// Three short lines and some remarks: more is another file, named by mistake.
constexpr std::size_t kMaxFileBytes = std::size_t{64} * 1024;

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

[[noreturn]] void Refuse(const std::string& place, const std::string& why) {
  throw Failure(kBadUsage, "--snmp-secrets " + EscapeText(place) + ": " + why);
}

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

void RequirePrivateFile(const std::string& path) {
  std::error_code error;
  const fs::file_status status = fs::status(PathFromUtf8(path), error);
  if (!fs::exists(status)) Refuse(path, "no such file");
  // A pipe is another program that hands the secrets over.
  if (!fs::is_regular_file(status) && !fs::is_fifo(status)) Refuse(path, "is not a file");
  if ((status.permissions() & (fs::perms::group_all | fs::perms::others_all)) != fs::perms::none) {
    Refuse(path, "others may read or change it; run: chmod 600 " + EscapeText(path));
  }
}

std::string ReadAll(const std::string& path) {
  std::ifstream stream(PathFromUtf8(path), std::ios::binary);
  std::string content(kMaxFileBytes + 1, '\0');
  stream.read(content.data(), static_cast<std::streamsize>(content.size()));
  if (stream.bad() || (!stream.eof() && stream.gcount() == 0)) Refuse(path, "cannot be read");
  content.resize(static_cast<std::size_t>(stream.gcount()));
  if (content.size() > kMaxFileBytes) Refuse(path, "longer than 64 KiB");
  return content;
}

// What is wrong with the line; empty when nothing is.
std::string TakeLine(std::string_view line, SnmpSecrets* secrets) {
  line = Trimmed(line);
  if (line.empty() || line.front() == '#') return {};
  const std::size_t equals = line.find('=');
  const std::string_view word = Trimmed(line.substr(0, equals));
  for (const Secret& secret : kSecrets) {
    if (word != secret.word || equals == std::string_view::npos) continue;
    if (secrets->*secret.member) return "a second " + std::string(word);
    const std::string_view text = Trimmed(line.substr(equals + 1));
    if (text.empty()) return "nothing behind the =";
    std::wstring wide = WideFromUtf8(text);
    if (Utf8FromWide(wide) != text) return "not UTF-8";
    secrets->*secret.member = std::move(wide);
    return {};
  }
  return "expected community, auth-passphrase or priv-passphrase, then = and a text";
}

}  // namespace

SnmpSecrets SecretsOfEnvironment() {
  SnmpSecrets secrets;
  for (const Secret& secret : kSecrets) {
    const char* const text = std::getenv(secret.variable);
    if (text && *text) secrets.*secret.member = WideFromUtf8(text);
  }
  return secrets;
}

SnmpSecrets SecretsOfFile(const std::string& path) {
  RequirePrivateFile(path);
  const std::string content = ReadAll(path);
  SnmpSecrets secrets;
  std::string_view rest = content;
  for (int number = 1; !rest.empty(); ++number) {
    const std::size_t end = rest.find('\n');
    const std::string problem = TakeLine(rest.substr(0, end), &secrets);
    if (!problem.empty()) Refuse(path + ':' + std::to_string(number), problem);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  }
  return secrets;
}

}  // namespace Corvane::Tool
