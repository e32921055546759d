// The keys that devices are known by, in a text file.
#ifndef CORVANE_HOST_TRUST_PIN_FILE_H_
#define CORVANE_HOST_TRUST_PIN_FILE_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace Corvane::Host {

struct PinnedKey {
  std::string name;      // "printer.test:443", "[::1]:443": as a URL has it, in lower case
  std::string key;       // "sha256//" and the Base64 of its SubjectPublicKeyInfo's hash
  std::size_t line = 0;  // of the file, from 1
};

// A key, or none; with an error code and a remark for people where the file cannot be relied on.
struct PinLookup {
  std::optional<PinnedKey> pin;
  std::uint32_t error = 0;
  std::wstring remark;
};

// Lines "HOST:PORT sha256//BASE64", one for each name; empty ones and those that begin with '#' say
// nothing. A file with any other line is refused as a whole, as is one that cannot be read: what it
// should say is not known. A file that does not exist has no keys.
//
// Any number of threads and processes agree through a lock on the file (flock), which each waits
// for up to `waitMs`; a cancel takes effect within kLockPauseMs. Throws bad_alloc.
class PinFile {
 public:
  // `path`: UTF-8.
  explicit PinFile(std::string path) : m_path(std::move(path)) {}

  PinLookup Find(const std::string& name, std::int64_t waitMs,
                 const std::atomic<bool>& cancelled) const {
    return Access(name, {}, waitMs, cancelled);
  }
  // Adds `key`, unless there is one for `name` by now: that is the result then, whatever it is.
  // Durable when it returns. A failure changes nothing.
  PinLookup Record(const std::string& name, const std::string& key, std::int64_t waitMs,
                   const std::atomic<bool>& cancelled) const {
    return Access(name, key, waitMs, cancelled);
  }
  // What people are to know when a device shows another key than `pin`, or, empty, none.
  std::wstring TellOfChange(const PinnedKey& pin, const std::string& shown) const;

 private:
  PinLookup Access(const std::string& name, const std::string& newKey, std::int64_t waitMs,
                   const std::atomic<bool>& cancelled) const;
  PinLookup Fault(const std::string& what) const;
  PinLookup SystemFault(const char* what) const;
  PinLookup Lock(int file, int operation, std::int64_t waitMs,
                 const std::atomic<bool>& cancelled) const;
  PinLookup FindIn(const std::string& text, const std::string& name) const;
  std::wstring Name() const;

  const std::string m_path;
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_TRUST_PIN_FILE_H_
