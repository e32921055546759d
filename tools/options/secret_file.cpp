#include "tools/options/secret_file.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <optional>
#include <system_error>
#include <utility>

#include "base/utf8.h"
#include "base/utf8_path.h"
#include "tools/output/failure.h"
#include "tools/output/text.h"

namespace Corvane::Tool {
namespace {

namespace fs = std::filesystem;

// Three short lines and some remarks: more is another file, named by mistake.
constexpr std::size_t kMaxFileBytes = std::size_t{64} * 1024;

// Where something is wrong: the option, then the file.
struct Place {
  const std::string& option;
  const std::string& path;
};

[[noreturn]] void RefuseSecret(const Place& place, const std::string& why, int line = 0) {
  const std::string number = line > 0 ? ':' + std::to_string(line) : std::string();
  throw Failure(kBadUsage, place.option + ' ' + EscapeText(place.path) + number + ": " + why);
}

std::string_view TrimmedSecret(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

void RequirePrivateFile(const Place& place) {
  std::error_code error;
  const fs::file_status status = fs::status(PathFromUtf8(place.path), error);
  if (!fs::exists(status)) RefuseSecret(place, "no such file");
  // A pipe is another program that hands the secrets over.
  if (!fs::is_regular_file(status) && !fs::is_fifo(status)) RefuseSecret(place, "is not a file");
  if ((status.permissions() & (fs::perms::group_all | fs::perms::others_all)) != fs::perms::none) {
    RefuseSecret(place, "others may read or change it; run: chmod 600 " + EscapeText(place.path));
  }
}

std::string ReadSecretFile(const Place& place) {
  std::ifstream stream(PathFromUtf8(place.path), std::ios::binary);
  std::string content(kMaxFileBytes + 1, '\0');
  stream.read(content.data(), static_cast<std::streamsize>(content.size()));
  if (stream.bad() || (!stream.eof() && stream.gcount() == 0))
    RefuseSecret(place, "cannot be read");
  content.resize(static_cast<std::size_t>(stream.gcount()));
  if (content.size() > kMaxFileBytes) RefuseSecret(place, "longer than 64 KiB");
  return content;
}

// "community, auth-passphrase or priv-passphrase".
std::string ListedSecretNames(const std::vector<std::string_view>& words) {
  std::string list;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i > 0) list += i + 1 == words.size() ? " or " : ", ";
    list += words[i];
  }
  return list;
}

// What is wrong with the line; empty when nothing is.
std::string TakeSecretLine(std::string_view line, const std::vector<std::string_view>& words,
                           std::map<std::string_view, std::wstring>* secrets) {
  line = TrimmedSecret(line);
  if (line.empty() || line.front() == '#') return {};
  const std::size_t equals = line.find('=');
  const auto word = std::find(words.begin(), words.end(), TrimmedSecret(line.substr(0, equals)));
  if (word == words.end() || equals == std::string_view::npos) {
    return "expected " + ListedSecretNames(words) + ", then = and a text";
  }
  if (secrets->contains(*word)) return "a second " + std::string(*word);
  const std::string_view text = TrimmedSecret(line.substr(equals + 1));
  if (text.empty()) return "nothing behind the =";
  std::optional<std::wstring> wide = ToWideStrictly(text);
  if (!wide) return "not UTF-8";
  secrets->emplace(*word, *std::move(wide));
  return {};
}

}  // namespace

std::map<std::string_view, std::wstring> ReadSecretFile(
    const std::string& option, const std::string& path,
    const std::vector<std::string_view>& words) {
  const Place place{option, path};
  RequirePrivateFile(place);
  const std::string content = ReadSecretFile(place);
  std::map<std::string_view, std::wstring> secrets;
  std::string_view rest = content;
  for (int number = 1; !rest.empty(); ++number) {
    const std::size_t end = rest.find('\n');
    const std::string problem = TakeSecretLine(rest.substr(0, end), words, &secrets);
    if (!problem.empty()) RefuseSecret(place, problem, number);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  }
  return secrets;
}

}  // namespace Corvane::Tool
