#include "host/trust/pin_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
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

// Closing frees its lock, too, also when the process dies.
struct Descriptor {
  explicit Descriptor(int descriptor) : number(descriptor) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number >= 0) close(number);
  }
  const int number;
};

bool IsPinnedName(std::string_view text) {
  return text.find(':') != std::string_view::npos &&
         std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c <= '~'; });
}

// 32 bytes in RFC 4648, 4.
bool IsPinnedKey(std::string_view text) {
  constexpr std::string_view kScheme = "sha256//";
  constexpr std::size_t kDigits = 43;
  if (!text.starts_with(kScheme) || text.size() != kScheme.size() + kDigits + 1) return false;
  const std::string_view digits = text.substr(kScheme.size(), kDigits);
  return text.ends_with('=') && std::all_of(digits.begin(), digits.end(), [](char c) {
           return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                  c == '+' || c == '/';
         });
}

// Up to a byte more than a pin file may have; false with errno.
bool ReadPins(int file, std::string* text) {
  text->resize(kMaxPinFileBytes + 1);
  std::size_t size = 0;
  for (ssize_t bytes = 1; bytes > 0 && size < text->size();) {
    bytes = read(file, text->data() + size, text->size() - size);
    if (bytes < 0 && errno != EINTR) return false;
    if (bytes < 0)
      bytes = 1;  // try again
    else
      size += static_cast<std::size_t>(bytes);
  }
  text->resize(size);
  return true;
}

// Behind `size` bytes, durably, or not at all.
bool AppendPin(int file, std::size_t size, std::string_view text) {
  const auto end = static_cast<off_t>(size);
  const ssize_t written = pwrite(file, text.data(), text.size(), end);
  if (written == static_cast<ssize_t>(text.size()) && fsync(file) == 0) return true;
  const int error = written < 0 ? errno : ENOSPC;
  static_cast<void>(ftruncate(file, end));
  errno = error;
  return false;
}

}  // namespace

std::wstring PinFile::Name() const {
  return ToWideStrictly(m_path).value_or(WideFromLatin1(m_path));
}

PinLookup PinFile::Fault(const std::string& what) const {
  return {std::nullopt, kErrorSecureFailure,
          L"the pin file " + Name() + L' ' + WideFromLatin1(what)};
}

PinLookup PinFile::SystemFault(const char* what) const {
  return Fault(std::string(what) + ": " + std::generic_category().message(errno));
}

PinLookup PinFile::Lock(int file, int operation, std::int64_t waitMs,
                        const std::atomic<bool>& cancelled) const {
  const Clock::time_point end = Clock::now() + std::chrono::milliseconds(waitMs);
  while (flock(file, operation | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) return SystemFault("cannot be locked");
    if (cancelled.load()) return {std::nullopt, kErrorCancelled, L"cancelled"};
    if (Clock::now() >= end) {
      PinLookup late = Fault("is locked by another process");
      late.error = kErrorTimeout;
      return late;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(kLockPauseMs));
  }
  return {};
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
    if (!IsPinnedName(line.substr(0, space)) || !IsPinnedKey(key)) {
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

// Without `newKey` nothing is written.
PinLookup PinFile::Access(const std::string& name, const std::string& newKey, std::int64_t waitMs,
                          const std::atomic<bool>& cancelled) const {
  const bool writes = !newKey.empty();
  // Not to wait for the writer of a pipe.
  const Descriptor file(open(
      m_path.c_str(), (writes ? O_RDWR | O_CREAT : O_RDONLY) | O_CLOEXEC | O_NONBLOCK, kFileMode));
  if (file.number < 0 && errno == ENOENT && !writes) return {};
  struct stat status {};
  if (file.number < 0 || fstat(file.number, &status) != 0) {
    return SystemFault(writes ? "cannot be written" : "cannot be read");
  }
  if (!S_ISREG(status.st_mode)) return Fault("is no file");
  PinLookup locked = Lock(file.number, writes ? LOCK_EX : LOCK_SH, waitMs, cancelled);
  if (locked.error != 0) return locked;
  std::string text;
  if (!ReadPins(file.number, &text)) return SystemFault("cannot be read");
  if (text.size() > kMaxPinFileBytes) {
    return Fault("is larger than " + std::to_string(kMaxPinFileBytes) + " bytes");
  }
  PinLookup known = FindIn(text, name);
  if (known.pin || known.error != 0 || !writes) return known;
  const std::string added =
      (text.empty() || text.ends_with('\n') ? "" : "\n") + name + ' ' + newKey + '\n';
  if (text.size() + added.size() > kMaxPinFileBytes) return Fault("has no room for another key");
  known = FindIn(text + added, name);  // what others will read
  if (known.pin && !AppendPin(file.number, text.size(), added)) {
    return SystemFault("cannot be written");
  }
  return known;
}

std::wstring PinFile::TellOfChange(const PinnedKey& pin, const std::string& shown) const {
  std::wstring text =
      L"the key of " + WideFromLatin1(pin.name) + L" has changed from " + WideFromLatin1(pin.key);
  if (!shown.empty()) text += L" to " + WideFromLatin1(shown);
  return text + L"; where the device is known to have a new one, remove line " +
         std::to_wstring(pin.line) + L" of " + Name();
}

}  // namespace Corvane::Host
