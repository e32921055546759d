// A folder of recorded bodies.
#ifndef CORVANE_HOST_RECORDED_RECORDING_H_
#define CORVANE_HOST_RECORDED_RECORDING_H_

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace Corvane::Host {

// Immutable; any thread.
class Recording {
 public:
  // None when `folder` is no folder.
  static std::optional<Recording> Open(const std::filesystem::path& folder);

  enum class Result { kFound, kMissing, kTooLarge, kUnreadable };
  // The body of the resource, in `body` when it is found.
  Result Read(std::uint32_t port, std::wstring_view uri, std::string* body) const;

 private:
  explicit Recording(std::filesystem::path root) : m_root(std::move(root)) {}
  std::optional<std::filesystem::path> Find(const std::filesystem::path& path) const;

  std::filesystem::path m_root;  // final: without links
};

// The path relative to the recording of a resource path, "8080/DevMgmt/x.xml"; none for one that no
// file of a portable recording has. Nothing is decoded: "%2e" is a name.
std::optional<std::filesystem::path> RecordedPath(std::uint32_t port, std::wstring_view uri);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_RECORDED_RECORDING_H_
