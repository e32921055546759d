// Why the last exchange of an address failed.
#ifndef CORVANE_HOST_COMMON_LAST_FAILURE_H_
#define CORVANE_HOST_COMMON_LAST_FAILURE_H_

#include <map>
#include <mutex>
#include <string>
#include <thread>

namespace Corvane::Host {

// Shared by an address and its requests. Any thread may set and get at any time. One sentence is
// kept, that of the exchange that ended last on any thread; a reader gets a copy of its own thread,
// so that another thread's exchange does not pull the text from under it.
class LastFailure {
 public:
  // Empty for an exchange that succeeded.
  void Set(std::wstring sentence);
  // Valid until this thread asks again. Never null.
  const wchar_t* Get();

 private:
  std::mutex m_mutex;
  std::wstring m_sentence;                           // guarded by m_mutex
  std::map<std::thread::id, std::wstring> m_copies;  // guarded by m_mutex, but for a thread's own
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_COMMON_LAST_FAILURE_H_
