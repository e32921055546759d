#include <thread>

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

  // It has nothing left to do but to go: who waited for it finds it gone.
  void TakeSignal() override {
    if (m_thread.joinable()) m_thread.join();
  }

  static HANDLE Start(unsigned (*start)(void*), void* argument) {
    const auto self = std::make_shared<Thread>();
    const HANDLE handle = HandleTable::OfProcess().Add(self);
    try {
      // It ends no sooner than its std::thread is here.
      const std::lock_guard lock(WaitingRoom::OfProcess().mutex);
      self->m_thread = std::thread([self, start, argument] {
        start(argument);
        const std::lock_guard ended(WaitingRoom::OfProcess().mutex);
        self->Signal();
      });
    } catch (...) {
      CloseHandle(handle);
      throw;
    }
    return handle;
  }

 private:
  std::thread m_thread;
};

}  // namespace
}  // namespace Corvane

extern "C" std::uintptr_t _beginthreadex(void*, unsigned, unsigned (*start)(void*), void* argument,
                                         unsigned, unsigned* id) {
  if (id) *id = 0;
  try {
    return reinterpret_cast<std::uintptr_t>(Corvane::Thread::Start(start, argument));
  } catch (...) {
    return 0;
  }
}
