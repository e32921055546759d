// Writes to one open key or printer that stand or fall together.
#ifndef CORVANE_PLATFORM_WRITE_GROUP_H_
#define CORVANE_PLATFORM_WRITE_GROUP_H_

#include "corvane/platform.h"

#ifndef _WIN32
#include <memory>
#endif

namespace Corvane {

#ifdef _WIN32

// The registry keeps each value by itself: nothing to do.
class WriteGroup {
 public:
  explicit WriteGroup(HKEY) {}
  explicit WriteGroup(HANDLE) {}
  WriteGroup(const WriteGroup&) = delete;
  WriteGroup& operator=(const WriteGroup&) = delete;
  ~WriteGroup() = default;

  LSTATUS Commit() { return ERROR_SUCCESS; }
};

#else

namespace Store {
class Connection;
}

// One transaction, which begins with the first write through the handle, by whichever thread: a
// process that dies before Commit leaves all the old values. A write that fails alone does not take
// the others with it. From the first write on other writers wait, those of this thread through
// another handle in vain: be short, and make keys before. A group within a group of the same handle
// is part of it; HKEY_LOCAL_MACHINE has no groups. The handle may be closed within its group.
class WriteGroup {
 public:
  explicit WriteGroup(HKEY key);
  explicit WriteGroup(HANDLE printer);
  WriteGroup(const WriteGroup&) = delete;
  WriteGroup& operator=(const WriteGroup&) = delete;
  ~WriteGroup();  // without Commit the writes are undone

  // ERROR_SUCCESS, also for an invalid handle, whose writes have failed one by one. After a failure
  // none of the writes stands. Writes after Commit are no longer of the group.
  LSTATUS Commit();

 private:
  LSTATUS End(bool commit);

  std::shared_ptr<Store::Connection> m_connection;
};

#endif

}  // namespace Corvane

#endif  // CORVANE_PLATFORM_WRITE_GROUP_H_
