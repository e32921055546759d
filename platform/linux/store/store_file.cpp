#include "platform/linux/store/store_file.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "platform/linux/store/result_codes.h"

namespace Corvane::Store {
namespace {

constexpr mode_t kFolderMode = 0700;
constexpr mode_t kFileMode = 0600;

std::string EnvironmentVariable(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

std::string HomeOfUser() {
  constexpr std::size_t kEntryBytes = 16384;  // more than any sane password entry has
  std::vector<char> buffer(kEntryBytes);
  passwd entry{};
  passwd* found = nullptr;
  const int failure = getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found);
  return failure == 0 && found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "";
}

std::string StoreFolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// `path` without symbolic links in its folders.
LSTATUS ResolveStorePath(std::string* path) {
  const std::unique_ptr<char, decltype(&std::free)> folder(
      realpath(StoreFolderOf(*path).c_str(), nullptr), &std::free);
  if (folder == nullptr) return FromErrno(errno);
  *path = std::string(folder.get()) + "/" + path->substr(path->rfind('/') + 1);
  return ERROR_SUCCESS;
}

LSTATUS MakeFolders(const std::string& folder) {
  for (std::size_t end = 0; end != std::string::npos;) {
    end = folder.find('/', end + 1);
    if (mkdir(folder.substr(0, end).c_str(), kFolderMode) == 0 || errno == EEXIST) continue;
    // A folder above that is closed or read-only may be there all the same.
    const int error = errno;
    struct stat status {};
    if (stat(folder.substr(0, end).c_str(), &status) != 0) return FromErrno(error);
  }
  return ERROR_SUCCESS;
}

// Without this a power failure could take the new name away again.
void SyncFolder(const std::string& folder) {
  const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  fsync(descriptor);
  close(descriptor);
}

}  // namespace

LSTATUS StorePath(std::string* path) {
  *path = EnvironmentVariable("CORVANE_STORE");
  if (!path->empty()) return ERROR_SUCCESS;
  std::string state = EnvironmentVariable("XDG_STATE_HOME");
  if (!state.starts_with('/')) {
    std::string home = EnvironmentVariable("HOME");
    if (home.empty()) home = HomeOfUser();
    if (home.empty()) return ERROR_REGISTRY_IO_FAILED;
    state = home + "/.local/state";
  }
  *path = state + "/corvane/store.db";
  return ERROR_SUCCESS;
}

LSTATUS FindStoreFile(std::string* path) {
  if (const LSTATUS result = ResolveStorePath(path); result != ERROR_SUCCESS) return result;
  struct stat status {};
  if (lstat(path->c_str(), &status) != 0) return FromErrno(errno);
  return S_ISREG(status.st_mode) ? ERROR_SUCCESS : ERROR_NOT_REGISTRY_FILE;
}

LSTATUS CreateStoreFile(const std::string& path,
                        const std::function<LSTATUS(const std::string&)>& fill) {
  const std::string folder = StoreFolderOf(path);
  LSTATUS result = MakeFolders(folder);
  if (result != ERROR_SUCCESS) return result;

  std::uint64_t random = 0;
  if (getrandom(&random, sizeof random, 0) != sizeof random) return ERROR_REGISTRY_IO_FAILED;
  char suffix[32];
  std::snprintf(suffix, sizeof suffix, ".new-%016llx", static_cast<unsigned long long>(random));
  std::string fresh = path + suffix;
  result = ResolveStorePath(&fresh);
  if (result != ERROR_SUCCESS) return result;
  const int descriptor =
      open(fresh.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kFileMode);
  if (descriptor < 0) return FromErrno(errno);
  close(descriptor);

  result = fill(fresh);
  if (result == ERROR_SUCCESS) {
    if (renameat2(AT_FDCWD, fresh.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0) {
      SyncFolder(folder);
      return ERROR_SUCCESS;
    }
    if (errno != EEXIST) result = FromErrno(errno);
  }
  for (const char* part : {"", "-journal", "-wal", "-shm"}) unlink((fresh + part).c_str());
  return result;
}

}  // namespace Corvane::Store
