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
// Any number of threads and processes: the file is replaced as a whole, so that a reader needs no
// lock; writers agree through a lock on "FILE.lock", which stays. A link to a file is followed.
// Throws bad_alloc.
class PinFile {
 public:
  // `path`: UTF-8.
  explicit PinFile(std::string path) : m_path(std::move(path)) {}

  PinLookup Find(const std::string& name) const;
  // Adds `key`, unless there is one for `name` by now: that is the result then, whatever it is.
  // Durable when it returns. Waits up to `waitMs` for other writers; a cancel takes effect within
  // kLockPauseMs. A failure changes nothing.
  PinLookup Record(const std::string& name, const std::string& key, std::int64_t waitMs,
                   const std::atomic<bool>& cancelled) const;

 private:
  PinLookup Fault(const std::string& what) const;
  PinLookup SystemFault(const char* what, int error) const;
  std::optional<PinLookup> Read(std::string* text) const;
  PinLookup FindIn(const std::string& text, const std::string& name) const;
  std::optional<PinLookup> Replace(const std::string& file, const std::string& text) const;

  const std::string m_path;
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_TRUST_PIN_FILE_H_
