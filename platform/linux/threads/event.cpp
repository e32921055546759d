#include <map>
#include <string>

#include "platform/linux/misc/exception_wall.h"
#include "platform/linux/threads/threads.h"
#include "platform/linux/threads/waitable.h"

namespace Corvane {
namespace {

constexpr std::size_t kMaxName = 260;

class Event final : public Waitable {
 public:
  Event(bool manualReset, bool signalled) : Waitable(signalled), m_manualReset(manualReset) {}

  void Reset() { m_signalled = false; }
  void TakeSignal() override { m_signalled = m_signalled && m_manualReset; }

 private:
  const bool m_manualReset;
};

// The open events with a name, guarded by the room's mutex.
std::map<std::wstring, std::weak_ptr<Event>>& NamedEvents() {
  static auto& events = *new std::map<std::wstring, std::weak_ptr<Event>>;
  return events;
}

std::shared_ptr<Event> OpenOrMakeEvent(const wchar_t* name, bool manualReset, bool initialState,
                                       bool* opened) {
  const std::lock_guard lock(WaitingRoom::OfProcess().mutex);
  auto& events = NamedEvents();
  std::erase_if(events, [](const auto& entry) { return entry.second.expired(); });
  if (!name || !*name) return std::make_shared<Event>(manualReset, initialState);
  std::weak_ptr<Event>& known = events[name];
  std::shared_ptr<Event> event = known.lock();
  *opened = event != nullptr;
  if (!event) known = event = std::make_shared<Event>(manualReset, initialState);
  return event;
}

// False unless the handle is that of an event, for which `operation` then runs.
template <typename Operation>
BOOL WithEvent(HANDLE handle, Operation&& operation) {
  const auto event =
      std::dynamic_pointer_cast<Event>(HandleTable::OfProcess().Find<Waitable>(handle));
  if (!event) {
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
  }
  const std::lock_guard lock(WaitingRoom::OfProcess().mutex);
  operation(*event);
  return TRUE;
}

}  // namespace
}  // namespace Corvane

extern "C" {

HANDLE WINAPI CreateEventW(_SECURITY_ATTRIBUTES*, BOOL manualReset, BOOL initialState,
                           const wchar_t* name) {
  HANDLE handle = nullptr;
  const LSTATUS error = Corvane::BehindWall([&]() -> LSTATUS {
    if (name && std::wstring_view(name).size() > Corvane::kMaxName) {
      return ERROR_FILENAME_EXCED_RANGE;
    }
    bool opened = false;
    handle = Corvane::HandleTable::OfProcess().Add(
        Corvane::OpenOrMakeEvent(name, manualReset != FALSE, initialState != FALSE, &opened));
    return opened ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS;
  });
  SetLastError(static_cast<DWORD>(error));
  return handle;
}

BOOL WINAPI SetEvent(HANDLE event) {
  return Corvane::WithEvent(event, [](Corvane::Event& each) { each.Signal(); });
}

BOOL WINAPI ResetEvent(HANDLE event) {
  return Corvane::WithEvent(event, [](Corvane::Event& each) { each.Reset(); });
}

}  // extern "C"
