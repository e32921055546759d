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
#include "tools/output/text_escape.h"

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

[[noreturn]] void Refuse(const Place& place, const std::string& why, int line = 0) {
  const std::string number = line > 0 ? ':' + std::to_string(line) : std::string();
  throw Failure(kBadUsage, place.option + ' ' + EscapeText(place.path) + number + ": " + why);
}

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

void RequirePrivateFile(const Place& place) {
  std::error_code error;
  const fs::file_status status = fs::status(PathFromUtf8(place.path), error);
  if (!fs::exists(status)) Refuse(place, "no such file");
  // A pipe is another program that hands the secrets over.
  if (!fs::is_regular_file(status) && !fs::is_fifo(status)) Refuse(place, "is not a file");
  if ((status.permissions() & (fs::perms::group_all | fs::perms::others_all)) != fs::perms::none) {
    Refuse(place, "others may read or change it; run: chmod 600 " + EscapeText(place.path));
  }
}

std::string ReadAll(const Place& place) {
  std::ifstream stream(PathFromUtf8(place.path), std::ios::binary);
  std::string content(kMaxFileBytes + 1, '\0');
  stream.read(content.data(), static_cast<std::streamsize>(content.size()));
  if (stream.bad() || (!stream.eof() && stream.gcount() == 0)) Refuse(place, "cannot be read");
  content.resize(static_cast<std::size_t>(stream.gcount()));
  if (content.size() > kMaxFileBytes) Refuse(place, "longer than 64 KiB");
  return content;
}

// "community, auth-passphrase or priv-passphrase".
std::string Listed(const std::vector<std::string_view>& words) {
  std::string list;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i > 0) list += i + 1 == words.size() ? " or " : ", ";
    list += words[i];
  }
  return list;
}

// What is wrong with the line; empty when nothing is.
std::string TakeLine(std::string_view line, const std::vector<std::string_view>& words,
                     std::map<std::string_view, std::wstring>* secrets) {
  line = Trimmed(line);
  if (line.empty() || line.front() == '#') return {};
  const std::size_t equals = line.find('=');
  const auto word = std::find(words.begin(), words.end(), Trimmed(line.substr(0, equals)));
  if (word == words.end() || equals == std::string_view::npos) {
    return "expected " + Listed(words) + ", then = and a text";
  }
  if (secrets->contains(*word)) return "a second " + std::string(*word);
  const std::string_view text = Trimmed(line.substr(equals + 1));
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
  const std::string content = ReadAll(place);
  std::map<std::string_view, std::wstring> secrets;
  std::string_view rest = content;
  for (int number = 1; !rest.empty(); ++number) {
    const std::size_t end = rest.find('\n');
    const std::string problem = TakeLine(rest.substr(0, end), words, &secrets);
    if (!problem.empty()) Refuse(place, problem, number);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  }
  return secrets;
}

}  // namespace Corvane::Tool
