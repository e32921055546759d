#include <chrono>
#include <thread>
#include <vector>

#include "platform/linux/misc/exception_wall.h"
#include "platform/linux/threads/threads.h"
#include "platform/linux/threads/waitable.h"

namespace Corvane {
namespace {

struct Waited {
  std::shared_ptr<Waitable> object;
  std::uint64_t signals = 0;  // that it had when the wait began

  bool IsSignalled() const {
    return object->IsSignalled() || (object->ReleasesAll() && object->Signals() != signals);
  }
};
using Objects = std::vector<Waited>;

DWORD WaitFailed(DWORD error) {
  SetLastError(error);
  return WAIT_FAILED;
}

// The index of the object that ends the wait; the count when none does.
DWORD FindSignalled(const Objects& objects, bool all) {
  const auto count = static_cast<DWORD>(objects.size());
  DWORD signalled = 0;
  for (DWORD i = 0; i < count; ++i) {
    if (!objects[i].IsSignalled()) continue;
    if (!all) {
      objects[i].object->TakeSignal();
      return i;
    }
    ++signalled;
  }
  if (!all || signalled < count) return count;
  for (const Waited& each : objects) each.object->TakeSignal();
  return 0;
}

DWORD Wait(Objects& objects, bool all, DWORD milliseconds) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  WaitingRoom& room = WaitingRoom::OfProcess();
  std::unique_lock lock(room.mutex);
  for (Waited& each : objects) each.signals = each.object->Signals();
  const auto count = static_cast<DWORD>(objects.size());
  // A wait of 0 ms only asks: sleeping, even for no time, would cost more than 50 us.
  for (bool late = milliseconds == 0;;) {
    if (const DWORD index = FindSignalled(objects, all); index < count) {
      return WAIT_OBJECT_0 + index;
    }
    if (late) return WAIT_TIMEOUT;
    if (milliseconds == INFINITE) {
      room.changed.wait(lock);
    } else {
      late = room.changed.wait_until(lock, end) == std::cv_status::timeout;
    }
  }
}

}  // namespace

WaitingRoom& WaitingRoom::OfProcess() {
  // Never destroyed: threads may outlive the end of main().
  static WaitingRoom& room = *new WaitingRoom;
  return room;
}

}  // namespace Corvane

using Corvane::BehindWall;
using Corvane::HandleTable;
using Corvane::Waitable;

extern "C" {

DWORD WINAPI WaitForSingleObject(HANDLE object, DWORD milliseconds) {
  return WaitForMultipleObjects(1, &object, FALSE, milliseconds);
}

DWORD WINAPI WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL all,
                                    DWORD milliseconds) {
  if (count == 0 || count > MAXIMUM_WAIT_OBJECTS || !handles) {
    return Corvane::WaitFailed(ERROR_INVALID_PARAMETER);
  }
  DWORD result = WAIT_FAILED;
  const LSTATUS error = BehindWall([&]() -> LSTATUS {
    Corvane::Objects objects;
    for (DWORD i = 0; i < count; ++i) {
      objects.push_back({HandleTable::OfProcess().Find<Waitable>(handles[i])});
      if (!objects.back().object) return ERROR_INVALID_HANDLE;
    }
    result = Corvane::Wait(objects, all != FALSE, milliseconds);
    return ERROR_SUCCESS;
  });
  return error == ERROR_SUCCESS ? result : Corvane::WaitFailed(static_cast<DWORD>(error));
}

BOOL WINAPI CloseHandle(HANDLE object) {
  if (HandleTable::OfProcess().Remove<Waitable>(object)) return TRUE;
  SetLastError(ERROR_INVALID_HANDLE);
  return FALSE;
}

void WINAPI Sleep(DWORD milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

}  // extern "C"
