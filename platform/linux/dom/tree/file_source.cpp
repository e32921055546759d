#include "platform/linux/dom/tree/file_source.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "base/utf8.h"
#include "corvane/linux/dom.h"

namespace Corvane::Dom {
namespace {

constexpr std::size_t kMaxSourceBytes = 65'536;  // longer than any path that the system opens
constexpr HRESULT kSourceNotFound = static_cast<HRESULT>(0x800C0006);  // INET_E_OBJECT_NOT_FOUND

class FileHandle {
 public:
  explicit FileHandle(int handle) : m_handle(handle) {}
  ~FileHandle() {
    if (m_handle >= 0) close(m_handle);
  }
  FileHandle(const FileHandle&) = delete;
  FileHandle& operator=(const FileHandle&) = delete;
  int Get() const { return m_handle; }

 private:
  const int m_handle;
};

std::string_view StripScheme(std::string_view source) {
  constexpr std::string_view kScheme = "file:";
  if (source.size() < kScheme.size() ||
      strncasecmp(source.data(), kScheme.data(), kScheme.size()) != 0)
    return source;
  source.remove_prefix(kScheme.size());
  if (!source.starts_with("//")) return source;
  const std::size_t path = source.find('/', 2);
  const std::string_view host = source.substr(2, path == std::string_view::npos ? path : path - 2);
  const bool local =
      host.empty() || (host.size() == 9 && strncasecmp(host.data(), "localhost", 9) == 0);
  return local && path != std::string_view::npos ? source.substr(path) : std::string_view();
}

std::string ResolveEscapes(std::string_view path) {
  std::string resolved;
  for (std::size_t i = 0; i < path.size(); ++i) {
    unsigned value = 0;
    if (path[i] == '%' && i + 2 < path.size()) {
      const auto result = std::from_chars(&path[i + 1], &path[i + 1] + 2, value, 16);
      if (result.ptr == &path[i + 1] + 2 && value != 0) {
        resolved.push_back(static_cast<char>(value));
        i += 2;
        continue;
      }
    }
    resolved.push_back(path[i]);
  }
  return resolved;
}

std::string Explain(int error) { return std::generic_category().message(error); }

bool ReadAll(int file, std::size_t expected, std::string* bytes, std::string* reason) {
  constexpr std::size_t kLimit = Corvane::DomLimits::kMaxDocumentBytes;
  std::size_t done = 0;
  // One byte more than the file had: the read that finds its end needs no second buffer, and growth
  // is noticed.
  bytes->resize(expected + 1);
  for (;;) {
    const ssize_t count = read(file, bytes->data() + done, bytes->size() - done);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      *reason = "The file cannot be read: " + Explain(errno);
      return false;
    }
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
    if (done > kLimit) {
      *reason = "The file is too large.";
      return false;
    }
    if (done == bytes->size()) bytes->resize(done * 2);
  }
  bytes->resize(done);
  return true;
}

// *missing tells a name that does not exist from a file that cannot be read.
bool ReadRegularFile(const std::string& path, std::string* bytes, std::string* reason,
                     bool* missing) {
  struct stat status;
  *missing = stat(path.c_str(), &status) != 0;
  if (*missing) {
    *reason = "The file cannot be opened: " + Explain(errno);
    return false;
  }
  // Checked before opening, which alone can disturb a device or a FIFO's writer, and again on what
  // was opened.
  constexpr const char* kNotRegular = "The source is not a regular file.";
  if (!S_ISREG(status.st_mode)) {
    *reason = kNotRegular;
    return false;
  }
  const FileHandle file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (file.Get() < 0 || fstat(file.Get(), &status) != 0) {
    *reason = "The file cannot be opened: " + Explain(errno);
    return false;
  }
  if (!S_ISREG(status.st_mode)) {
    *reason = kNotRegular;
    return false;
  }
  if (status.st_size > static_cast<off_t>(Corvane::DomLimits::kMaxDocumentBytes)) {
    *reason = "The file is too large.";
    return false;
  }
  return ReadAll(file.Get(), static_cast<std::size_t>(status.st_size), bytes, reason);
}

bool ReadFile(std::string_view source, std::string* bytes, std::string* reason) {
  const std::string path(StripScheme(source));
  bool missing;
  if (ReadRegularFile(path, bytes, reason, &missing)) return true;
  const std::string resolved = ResolveEscapes(path);
  return missing && resolved != path && ReadRegularFile(resolved, bytes, reason, &missing);
}

}  // namespace

std::unique_ptr<Tree> ReadSource(std::wstring_view source, LoadFailure* failure) {
  std::optional<std::string> path;
  if (source.size() <= kMaxSourceBytes) path = ToUtf8Strictly(source);
  std::string bytes;
  std::string reason = "The source is no path.";
  if (!path || path->size() > kMaxSourceBytes || !ReadFile(*path, &bytes, &reason)) {
    *failure = {kSourceNotFound, std::move(reason), 0, 0};
    return nullptr;
  }
  return ReadBytes(bytes, failure);
}

}  // namespace Corvane::Dom
