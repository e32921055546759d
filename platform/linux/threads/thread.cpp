#include <thread>

#include "platform/linux/misc/exception_wall.h"
#include "platform/linux/threads/threads.h"
#include "platform/linux/threads/waitable.h"

namespace Corvane {
namespace {

class Thread final : public Waitable {
 public:
  Thread() : Waitable(false) {}
  ~Thread() override {
    if (m_thread.joinable()) m_thread.detach();
  }

  // The thread is about to end. After a wait for it, it has ended.
  void WaitedFor() override {
    if (m_thread.joinable()) m_thread.join();
  }

  static void Start(const std::shared_ptr<Thread>& self, unsigned (*start)(void*), void* argument) {
    // It ends no sooner than its std::thread is here.
    const std::lock_guard lock(WaitingRoom::OfProcess().mutex);
    self->m_thread = std::thread([self, start, argument] {
      start(argument);
      const std::lock_guard ended(WaitingRoom::OfProcess().mutex);
      self->Signal();
    });
  }

 private:
  std::thread m_thread;
};

}  // namespace
}  // namespace Corvane

extern "C" std::uintptr_t _beginthreadex(void*, unsigned, unsigned (*start)(void*), void* argument,
                                         unsigned, unsigned* id) {
  if (id) *id = 0;
  HANDLE handle = nullptr;
  const LSTATUS error = Corvane::BehindWall([&]() -> LSTATUS {
    const auto thread = std::make_shared<Corvane::Thread>();
    handle = Corvane::HandleTable::OfProcess().Add(thread);
    Corvane::Thread::Start(thread, start, argument);
    return ERROR_SUCCESS;
  });
  if (error == ERROR_SUCCESS) return reinterpret_cast<std::uintptr_t>(handle);
  if (handle) CloseHandle(handle);
  return 0;
}
