#include "platform/linux/store/fork.h"

#include <pthread.h>
#include <sqlite3.h>
#include <sys/stat.h>

namespace Corvane::Store {
namespace {

// A thread that wants to fork is not overtaken for ever by those that work.
constexpr pthread_rwlock_t kFree = PTHREAD_RWLOCK_WRITER_NONRECURSIVE_INITIALIZER_NP;
pthread_rwlock_t forkLock = kFree;

unsigned generation = 0;           // written while a child has one thread
sqlite3_vfs* unixFiles = nullptr;  // null while nothing has been opened

thread_local bool opensStore = false;

// SQLite counts the locks of the process in a table by device and inode, which a child inherits
// while the kernel gives it none of the locks. So in each child the store seems to lie on a device
// of its own, of which the table knows nothing.
int FstatInChild(int descriptor, struct stat* status) {
  const int result = fstat(descriptor, status);
  if (opensStore) status->st_dev += generation;
  return result;
}

void BeginChild() {
  ++generation;
  if (unixFiles != nullptr) {
    unixFiles->xSetSystemCall(unixFiles, "fstat",
                              reinterpret_cast<sqlite3_syscall_ptr>(&FstatInChild));
  }
  forkLock = kFree;  // the thread that locked it has another number in the child
}

[[maybe_unused]] const int kRegistered =
    pthread_atfork([] { pthread_rwlock_wrlock(&forkLock); },
                   [] { pthread_rwlock_unlock(&forkLock); }, &BeginChild);

}  // namespace

NoFork::NoFork() { pthread_rwlock_rdlock(&forkLock); }

NoFork::~NoFork() { pthread_rwlock_unlock(&forkLock); }

unsigned ProcessGeneration() { return generation; }

int OpenSqlite(const char* name, sqlite3** sqlite, int flags) {
  static sqlite3_vfs* const files = unixFiles = sqlite3_vfs_find("unix");
  opensStore = true;
  const int result = sqlite3_open_v2(name, sqlite, flags, files->zName);
  opensStore = false;
  return result;
}

}  // namespace Corvane::Store
