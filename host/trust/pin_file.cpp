#include "host/trust/pin_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <thread>

#include "base/letter_case.h"
#include "base/utf8.h"
#include "corvane/error_codes.h"

namespace Corvane::Host {
namespace {

using Clock = std::chrono::steady_clock;

// Some ten thousand devices. A larger file is something else; it is read for every exchange.
constexpr std::size_t kMaxPinFileBytes = std::size_t{1} << 20;
// How often the lock is tried.
constexpr int kLockPauseMs = 10;
constexpr mode_t kFileMode = 0644;  // the keys are public

class Descriptor {
 public:
  explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (m_descriptor >= 0) close(m_descriptor);
  }
  int Get() const { return m_descriptor; }
  explicit operator bool() const { return m_descriptor >= 0; }

 private:
  const int m_descriptor;
};

bool IsName(std::string_view text) {
  return text.find(':') != std::string_view::npos &&
         std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c <= '~'; });
}

// 32 bytes in RFC 4648, 4.
bool IsKey(std::string_view text) {
  constexpr std::string_view kScheme = "sha256//";
  constexpr std::size_t kDigits = 43;
  if (!text.starts_with(kScheme) || text.size() != kScheme.size() + kDigits + 1) return false;
  const std::string_view digits = text.substr(kScheme.size(), kDigits);
  return text.ends_with('=') && std::all_of(digits.begin(), digits.end(), [](char c) {
           return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                  c == '+' || c == '/';
         });
}

bool WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

// Where a link leads, so that the file is replaced and not the link.
std::string Target(const std::string& path) {
  std::error_code error;
  const std::filesystem::path target = std::filesystem::weakly_canonical(path, error);
  return error ? path : target.string();
}

}  // namespace

PinLookup PinFile::Fault(const std::string& what) const {
  std::wstring file = ToWideStrictly(m_path).value_or(WideFromLatin1(m_path));
  return {std::nullopt, kErrorSecureFailure,
          L"the pin file " + std::move(file) + L' ' + WideFromLatin1(what)};
}

PinLookup PinFile::SystemFault(const char* what, int error) const {
  return Fault(std::string(what) + ": " + std::generic_category().message(error));
}

// A lookup that has failed, or none.
std::optional<PinLookup> PinFile::Read(std::string* text) const {
  // Not to wait for the writer of a pipe.
  const Descriptor file(open(m_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file && errno == ENOENT) return std::nullopt;
  struct stat status {};
  if (!file || fstat(file.Get(), &status) != 0) return SystemFault("cannot be read", errno);
  if (!S_ISREG(status.st_mode)) return Fault("is no file");
  text->resize(kMaxPinFileBytes + 1);
  std::size_t size = 0;
  while (size < text->size()) {
    const ssize_t bytes = read(file.Get(), text->data() + size, text->size() - size);
    if (bytes < 0 && errno == EINTR) continue;
    if (bytes < 0) return SystemFault("cannot be read", errno);
    if (bytes == 0) break;
    size += static_cast<std::size_t>(bytes);
  }
  text->resize(size);
  if (size <= kMaxPinFileBytes) return std::nullopt;
  return Fault("is larger than " + std::to_string(kMaxPinFileBytes) + " bytes");
}

PinLookup PinFile::FindIn(const std::string& text, const std::string& name) const {
  PinLookup found;
  std::string_view rest = text;
  for (std::size_t number = 1; !rest.empty(); ++number) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    if (line.empty() || line.starts_with('#')) continue;
    const std::size_t space = std::min(line.find(' '), line.size());
    const std::string_view key = line.substr(std::min(space + 1, line.size()));
    if (!IsName(line.substr(0, space)) || !IsKey(key)) {
      return Fault("is broken: line " + std::to_string(number) +
                   " is not \"HOST:PORT sha256//BASE64\"");
    }
    if (LowerAscii(line.substr(0, space)) != name) continue;
    if (found.pin) {
      return Fault("is broken: lines " + std::to_string(found.pin->line) + " and " +
                   std::to_string(number) + " have one name");
    }
    found.pin = {name, std::string(key), number};
  }
  return found;
}

PinLookup PinFile::Find(const std::string& name) const {
  std::string text;
  if (std::optional<PinLookup> failed = Read(&text)) return *std::move(failed);
  return FindIn(text, name);
}

PinLookup PinFile::Record(const std::string& name, const std::string& key, std::int64_t waitMs,
                          const std::atomic<bool>& cancelled) const {
  const Clock::time_point end = Clock::now() + std::chrono::milliseconds(waitMs);
  const std::string target = Target(m_path);
  const Descriptor lock(
      open((target + ".lock").c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, kFileMode));
  if (!lock) return SystemFault("cannot be locked", errno);
  // Freed with its descriptor, also when the process dies.
  while (flock(lock.Get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) return SystemFault("cannot be locked", errno);
    if (cancelled.load()) return {std::nullopt, kErrorCancelled, L"cancelled"};
    if (Clock::now() >= end) {
      PinLookup late = Fault("is locked by another process");
      late.error = kErrorTimeout;
      return late;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(kLockPauseMs));
  }

  std::string text;
  if (std::optional<PinLookup> failed = Read(&text)) return *std::move(failed);
  PinLookup known = FindIn(text, name);
  if (known.pin || known.error != 0) return known;
  if (!text.empty() && !text.ends_with('\n')) text += '\n';
  text.append(name).append(" ").append(key).append("\n");
  if (text.size() > kMaxPinFileBytes) return Fault("has no room for another key");
  known = FindIn(text, name);  // what others will read
  if (!known.pin) return known;
  if (std::optional<PinLookup> failed = Replace(target, text)) return *std::move(failed);
  return known;
}

// The caller has the lock, so the new file's name is its own.
std::optional<PinLookup> PinFile::Replace(const std::string& file, const std::string& text) const {
  const std::string next = file + ".new";
  struct stat status {};
  const mode_t mode = stat(file.c_str(), &status) == 0 ? status.st_mode & 07777U : kFileMode;
  {
    const Descriptor made(
        open(next.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, kFileMode));
    if (!made || !WriteAll(made.Get(), text) || fchmod(made.Get(), mode) != 0 ||
        fsync(made.Get()) != 0) {
      const int error = errno;
      unlink(next.c_str());
      return SystemFault("cannot be written", error);
    }
  }
  if (rename(next.c_str(), file.c_str()) != 0) {
    const int error = errno;
    unlink(next.c_str());
    return SystemFault("cannot be replaced", error);
  }
  // After a power failure there may be the old file, where the file system does not sync folders:
  // the first use comes again then.
  const Descriptor folder(
      open(std::filesystem::path(file).parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder) static_cast<void>(fsync(folder.Get()));
  return std::nullopt;
}

}  // namespace Corvane::Host
