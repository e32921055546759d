// Reads the document that a path or file: URL names.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "base/letter_case.h"
#include "base/utf8.h"
#include "corvane/linux/dom.h"
#include "platform/linux/dom/tree/xml_reader.h"

namespace Corvane::Dom {
namespace {

constexpr std::size_t kMaxSourceBytes = 65'536;  // longer than any path that the system opens
constexpr HRESULT kSourceNotFound = static_cast<HRESULT>(0x800C0006);  // INET_E_OBJECT_NOT_FOUND

constexpr const char* kNotRegular = "The source is not a regular file.";
constexpr const char* kTooLarge = "The file is too large.";

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
  if (!EqualsIgnoreAsciiCase(source.substr(0, kScheme.size()), kScheme)) return source;
  source.remove_prefix(kScheme.size());
  if (!source.starts_with("//")) return source;
  const std::size_t path = source.find('/', 2);
  const std::string_view host = source.substr(2, path == std::string_view::npos ? path : path - 2);
  const bool local = host.empty() || EqualsIgnoreAsciiCase(host, "localhost");
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

std::string ExplainSource(int error) { return std::generic_category().message(error); }

std::string CannotOpen() { return "The file cannot be opened: " + ExplainSource(errno); }

// These three return why the file was not read; nothing when it was.
std::string ReadWholeSource(int file, std::size_t expected, std::string* bytes) {
  std::size_t done = 0;
  // One byte more than the file had: the read that finds its end needs no second buffer, and growth
  // is noticed.
  bytes->resize(expected + 1);
  for (;;) {
    const ssize_t count = read(file, bytes->data() + done, bytes->size() - done);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return "The file cannot be read: " + ExplainSource(errno);
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
    if (done > Corvane::DomLimits::kMaxDocumentBytes) return kTooLarge;
    if (done == bytes->size()) bytes->resize(done * 2);
  }
  bytes->resize(done);
  return {};
}

// *missing: there is no such name.
std::string ReadRegularFile(const std::string& path, std::string* bytes, bool* missing) {
  struct stat status;
  *missing = stat(path.c_str(), &status) != 0;
  if (*missing) return CannotOpen();
  // Checked before opening, which alone can disturb a device or a FIFO's writer, and again on what
  // was opened.
  if (!S_ISREG(status.st_mode)) return kNotRegular;
  const FileHandle file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (file.Get() < 0 || fstat(file.Get(), &status) != 0) return CannotOpen();
  if (!S_ISREG(status.st_mode)) return kNotRegular;
  const auto size = static_cast<std::uint64_t>(status.st_size);
  if (size > Corvane::DomLimits::kMaxDocumentBytes) return kTooLarge;
  return ReadWholeSource(file.Get(), size, bytes);
}

std::string ReadFile(std::string_view source, std::string* bytes) {
  const std::string path(StripScheme(source));
  bool missing = false;
  const std::string reason = ReadRegularFile(path, bytes, &missing);
  const std::string resolved = missing ? ResolveEscapes(path) : path;
  return resolved == path ? reason : ReadRegularFile(resolved, bytes, &missing);
}

}  // namespace

std::unique_ptr<Tree> ReadSource(std::wstring_view source, LoadFailure* failure) {
  std::optional<std::string> path;
  if (source.size() <= kMaxSourceBytes) path = ToUtf8Strictly(source);
  std::string bytes;
  const bool isPath = path && path->size() <= kMaxSourceBytes;
  std::string reason = isPath ? ReadFile(*path, &bytes) : "The source is no path.";
  if (reason.empty()) return ReadBytes(bytes, failure);
  *failure = {kSourceNotFound, std::move(reason), 0, 0};
  return nullptr;
}

}  // namespace Corvane::Dom
