#include "host/recorded/recording.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <system_error>
#include <utility>

#include "base/letter_case.h"
#include "base/utf8.h"
#include "base/utf8_path.h"
#include "host/recorded/final_path.h"

namespace Corvane::Host {
namespace {

namespace fs = std::filesystem;

// A file that is no recorded body: memory.
constexpr std::size_t kMaxBodyBytes = std::size_t{64} << 20;

// Names that are devices on Windows, in any folder and with any extension.
bool IsDeviceName(std::string_view segment) {
  constexpr std::array<std::wstring_view, 6> kDevices = {L"con", L"prn",    L"aux",
                                                         L"nul", L"conin$", L"conout$"};
  const std::wstring name = LowerAscii(WideFromLatin1(segment.substr(0, segment.find('.'))));
  if (std::find(kDevices.begin(), kDevices.end(), name) != kDevices.end()) return true;
  return name.size() == 4 && (name.starts_with(L"com") || name.starts_with(L"lpt")) &&
         name[3] >= L'0' && name[3] <= L'9';
}

// Windows drops dots and spaces at the end of a name, so that "..", ". ." and "x." are other names.
bool IsPlainName(std::string_view segment) {
  const auto forbidden = [](char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F ||
           std::string_view("\\:*?\"<>|").find(c) != std::string_view::npos;
  };
  return !segment.empty() && segment.back() != '.' && segment.back() != ' ' &&
         std::none_of(segment.begin(), segment.end(), forbidden) && !IsDeviceName(segment);
}

}  // namespace

std::optional<fs::path> RecordedPath(std::uint32_t port, std::wstring_view uri) {
  const std::string text = ToUtf8(uri);
  std::string_view rest = text;
  if (rest.starts_with('/')) rest.remove_prefix(1);
  fs::path path = std::to_string(port);
  while (true) {
    const std::size_t slash = rest.find('/');
    const std::string_view segment = rest.substr(0, slash);
    if (!IsPlainName(segment)) return std::nullopt;
    path /= PathFromUtf8(segment);
    if (slash == std::string_view::npos) return path;
    rest.remove_prefix(slash + 1);
  }
}

std::optional<Recording> Recording::Open(const fs::path& folder) {
  std::error_code error;
  if (!fs::is_directory(folder, error)) return std::nullopt;
  std::optional<fs::path> root = FinalPath(folder);
  if (!root) return std::nullopt;
  return Recording(*std::move(root));
}

// The file itself, without links: inside the recording and regular.
std::optional<fs::path> Recording::Find(const fs::path& path) const {
  std::optional<fs::path> file = FinalPath(m_root / path);
  if (!file) return std::nullopt;
  const auto [rootEnd, rest] =
      std::mismatch(m_root.begin(), m_root.end(), file->begin(), file->end());
  std::error_code error;
  if (rootEnd != m_root.end() || !fs::is_regular_file(*file, error)) return std::nullopt;
  return file;
}

Recording::Result Recording::Read(std::uint32_t port, std::wstring_view uri,
                                  std::string* body) const {
  const std::optional<fs::path> path = RecordedPath(port, uri);
  if (!path) return Result::kMissing;
  std::optional<fs::path> file = Find(*path);
  if (!file) file = Find(fs::path(*path) += ".xml");
  if (!file) return Result::kMissing;

  std::ifstream in(*file, std::ios::binary);
  if (!in) return Result::kUnreadable;
  std::array<char, 16384> block;
  while (in.read(block.data(), block.size()), in.gcount() > 0) {
    const auto bytes = static_cast<std::size_t>(in.gcount());
    if (bytes > kMaxBodyBytes - body->size()) return Result::kTooLarge;
    body->append(block.data(), bytes);
  }
  return in.eof() ? Result::kFound : Result::kUnreadable;
}

}  // namespace Corvane::Host
