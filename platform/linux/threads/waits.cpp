#include <algorithm>
#include <chrono>
#include <thread>

#include "platform/linux/misc/exception_wall.h"
#include "platform/linux/threads/threads.h"
#include "platform/linux/threads/waitable.h"

namespace Corvane {
namespace {

DWORD WaitFailed(DWORD error) {
  SetLastError(error);
  return WAIT_FAILED;
}

DWORD Run(Wait& wait, DWORD milliseconds) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  WaitingRoom& room = WaitingRoom::OfProcess();
  std::unique_lock lock(room.mutex);
  if (!wait.TryEnd()) {
    // Only asks: sleeping, even for no time, would cost more than 50 us.
    if (milliseconds == 0) return WAIT_TIMEOUT;
    const auto hasEnded = [&wait] { return wait.endedBy.has_value(); };
    room.waits.push_back(&wait);
    if (milliseconds == INFINITE) {
      room.changed.wait(lock, hasEnded);
    } else if (!room.changed.wait_until(lock, end, hasEnded)) {
      room.waits.remove(&wait);
      return WAIT_TIMEOUT;
    }
  }
  for (std::size_t i = 0; i < wait.objects.size(); ++i) {
    if (wait.all || i == wait.endedBy) wait.objects[i]->WaitedFor();
  }
  return WAIT_OBJECT_0 + static_cast<DWORD>(*wait.endedBy);
}

}  // namespace

bool Wait::TryEnd() {
  const auto isSignalled = [](const auto& object) { return object->IsSignalled(); };
  if (all) {
    if (!std::ranges::all_of(objects, isSignalled)) return false;
    for (const auto& object : objects) object->TakeSignal();
    endedBy = 0;
    return true;
  }
  const auto found = std::ranges::find_if(objects, isSignalled);
  if (found == objects.end()) return false;
  (*found)->TakeSignal();
  endedBy = static_cast<std::size_t>(found - objects.begin());
  return true;
}

void WaitingRoom::EndWaits() {
  if (std::erase_if(waits, [](Wait* wait) { return wait->TryEnd(); }) > 0) changed.notify_all();
}

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
    Corvane::Wait wait{.objects = {}, .all = all != FALSE};
    for (DWORD i = 0; i < count; ++i) {
      wait.objects.push_back(HandleTable::OfProcess().Find<Waitable>(handles[i]));
      if (!wait.objects.back()) return ERROR_INVALID_HANDLE;
    }
    result = Corvane::Run(wait, milliseconds);
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
