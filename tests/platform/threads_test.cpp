// Events, threads, waits and critical sections.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "platform/system.h"

namespace {

constexpr DWORD kSoonMs = 20;    // a wait that nothing is to end
constexpr DWORD kLongMs = 5000;  // one that something ends
constexpr DWORD kTimeout = WAIT_TIMEOUT;

unsigned __stdcall SignalLater(void* event) {
  Sleep(kSoonMs);
  SetEvent(event);
  return 0;
}

unsigned __stdcall WaitForIt(void* event) {
  return WaitForSingleObject(event, INFINITE) == WAIT_OBJECT_0 ? 0 : 1;
}

HANDLE Start(unsigned(__stdcall* start)(void*), void* argument) {
  return reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, start, argument, 0, nullptr));
}

HANDLE Event(bool manual, bool signalled, const wchar_t* name = nullptr) {
  return CreateEventW(nullptr, manual, signalled, name);
}

DWORD Wait(HANDLE object, DWORD milliseconds = 0) {
  return WaitForSingleObject(object, milliseconds);
}

TEST(ThreadsTest, AnAutomaticEventEndsOneWaitAndAManualOneAll) {
  for (const bool manual : {false, true}) {
    SCOPED_TRACE(manual ? "manual" : "automatic");
    const HANDLE event = Event(manual, true);
    EXPECT_EQ(WAIT_OBJECT_0, Wait(event));
    EXPECT_EQ(manual ? WAIT_OBJECT_0 : kTimeout, Wait(event));
    EXPECT_TRUE(SetEvent(event));
    EXPECT_TRUE(ResetEvent(event));
    EXPECT_EQ(kTimeout, Wait(event, kSoonMs));
    EXPECT_TRUE(CloseHandle(event));
  }
}

struct Waiting {
  HANDLE event;
  std::atomic<DWORD> begun = 0;
};

unsigned __stdcall WaitCounted(void* argument) {
  auto& waiting = *static_cast<Waiting*>(argument);
  ++waiting.begun;
  return WaitForIt(waiting.event);
}

// Whether signals that are reset at once end the waits of many threads: one of a manual event all,
// of an automatic one each a wait.
bool ResetSignalsEndWaits(bool manual) {
  constexpr DWORD kThreads = 16;
  Waiting waiting{Event(manual, false)};
  HANDLE threads[kThreads];
  for (HANDLE& thread : threads) thread = Start(&WaitCounted, &waiting);
  while (waiting.begun < kThreads) Sleep(1);
  Sleep(10 * kSoonMs);  // nothing tells that they wait
  for (DWORD i = 0; i < (manual ? 1 : kThreads); ++i) {
    SetEvent(waiting.event);
    ResetEvent(waiting.event);
  }
  constexpr DWORD kWakeMs = 500;
  const bool ended = WaitForMultipleObjects(kThreads, threads, TRUE, kWakeMs) == WAIT_OBJECT_0;
  while (WaitForMultipleObjects(kThreads, threads, TRUE, 1) != WAIT_OBJECT_0) {
    SetEvent(waiting.event);
  }
  for (const HANDLE thread : threads) CloseHandle(thread);
  CloseHandle(waiting.event);
  return ended;
}

TEST(ThreadsTest, ASignalEndsAWaitThoughItIsResetBeforeTheThreadWakes) {
  for (const bool manual : {false, true}) {
    // On a busy machine not every thread may be waiting in time.
    bool ended = false;
    for (int i = 0; i < 3 && !ended; ++i) ended = ResetSignalsEndWaits(manual);
    EXPECT_TRUE(ended) << (manual ? "manual" : "automatic");
  }
}

TEST(ThreadsTest, ANameIsOneEventUntilItsLastHandleCloses) {
  constexpr wchar_t kName[] = L"CorvaneThreadsTest";
  SetLastError(7);
  const HANDLE first = Event(true, false, kName);
  EXPECT_EQ(0u, GetLastError());
  const HANDLE second = Event(false, true, kName);  // as it is, not as asked for
  EXPECT_EQ(DWORD{ERROR_ALREADY_EXISTS}, GetLastError());
  EXPECT_NE(first, second);
  EXPECT_EQ(kTimeout, Wait(second));
  SetEvent(second);
  EXPECT_EQ(WAIT_OBJECT_0, Wait(first));
  EXPECT_TRUE(CloseHandle(first));
  EXPECT_EQ(WAIT_OBJECT_0, Wait(second));
  EXPECT_TRUE(CloseHandle(second));
  const HANDLE another = Event(true, false, kName);
  EXPECT_EQ(0u, GetLastError());
  EXPECT_EQ(kTimeout, Wait(another));
  CloseHandle(another);
}

TEST(ThreadsTest, RefusesHandlesThatAreNotOpen) {
  const HANDLE closed = Event(true, true);
  CloseHandle(closed);
  const auto isRefused = [](BOOL done, DWORD code) {
    const bool refused = !done && GetLastError() == code;
    SetLastError(0);
    return refused;
  };
  for (const HANDLE handle : {HANDLE{nullptr}, closed}) {
    EXPECT_TRUE(isRefused(SetEvent(handle), ERROR_INVALID_HANDLE)) << handle;
    EXPECT_TRUE(isRefused(ResetEvent(handle), ERROR_INVALID_HANDLE)) << handle;
    EXPECT_TRUE(isRefused(CloseHandle(handle), ERROR_INVALID_HANDLE)) << handle;
    EXPECT_TRUE(isRefused(Wait(handle, INFINITE) != WAIT_FAILED, ERROR_INVALID_HANDLE)) << handle;
  }
  const HANDLE many[MAXIMUM_WAIT_OBJECTS + 1] = {};
  for (const DWORD count : {DWORD{0}, DWORD{MAXIMUM_WAIT_OBJECTS + 1}}) {
    EXPECT_TRUE(isRefused(WaitForMultipleObjects(count, many, FALSE, 0) != WAIT_FAILED,
                          ERROR_INVALID_PARAMETER));
  }
}

TEST(ThreadsTest, WaitsForAnyOrAll) {
  const HANDLE events[] = {Event(false, false), Event(false, true), Event(false, true)};
  const auto wait = [&](bool all) { return WaitForMultipleObjects(3, events, all, kSoonMs); };
  EXPECT_EQ(kTimeout, wait(true));
  EXPECT_EQ(WAIT_OBJECT_0 + 1, wait(false)) << "a wait for all that fails takes none";
  EXPECT_EQ(WAIT_OBJECT_0 + 2, wait(false));
  EXPECT_EQ(kTimeout, wait(false));
  SetEvent(events[1]);
  SetEvent(events[2]);
  const HANDLE thread = Start(&SignalLater, events[0]);
  EXPECT_EQ(WAIT_OBJECT_0, WaitForMultipleObjects(3, events, TRUE, kLongMs));
  EXPECT_EQ(kTimeout, wait(false)) << "one that succeeds takes all";
  EXPECT_EQ(WAIT_OBJECT_0, Wait(thread, kLongMs));
  CloseHandle(thread);
  for (const HANDLE event : events) CloseHandle(event);
}

TEST(ThreadsTest, AThreadIsSignalledWhenItHasEnded) {
  const HANDLE event = Event(true, false);
  HANDLE threads[8];
  for (HANDLE& thread : threads) thread = Start(&WaitForIt, event);
  EXPECT_EQ(kTimeout, WaitForMultipleObjects(8, threads, FALSE, kSoonMs));
  SetEvent(event);
  EXPECT_EQ(WAIT_OBJECT_0, WaitForMultipleObjects(8, threads, TRUE, kLongMs));
  for (const HANDLE thread : threads) {
    EXPECT_EQ(WAIT_OBJECT_0, Wait(thread)) << "it stays signalled";
    EXPECT_FALSE(SetEvent(thread)) << "it is no event";
    EXPECT_TRUE(CloseHandle(thread));
  }
  ResetEvent(event);
  CloseHandle(Start(&SignalLater, event));  // which goes on without its handle
  EXPECT_EQ(WAIT_OBJECT_0, Wait(event, kLongMs));
  CloseHandle(event);
}

TEST(ThreadsTest, ACriticalSectionAdmitsOneThreadAsOftenAsItLikes) {
  CRITICAL_SECTION section;
  InitializeCriticalSection(&section);
  int count = 0;
  const auto add = [&] {
    for (int i = 0; i < 10000; ++i) {
      EnterCriticalSection(&section);
      EnterCriticalSection(&section);
      ++count;
      LeaveCriticalSection(&section);
      LeaveCriticalSection(&section);
    }
  };
  std::thread first(add), second(add);
  first.join();
  second.join();
  EXPECT_EQ(20000, count);
  DeleteCriticalSection(&section);
}

}  // namespace
