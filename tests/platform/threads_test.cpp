// Events, threads, waits and critical sections.
#include <gtest/gtest.h>

#include "platform/system.h"

namespace {

constexpr DWORD kSoonMs = 20;    // a wait that nothing is to end
constexpr DWORD kLongMs = 5000;  // one that something ends

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

TEST(ThreadsTest, AnAutomaticEventEndsOneWaitAndAManualOneAll) {
  for (const bool manual : {false, true}) {
    SCOPED_TRACE(manual ? "manual" : "automatic");
    const HANDLE event = Event(manual, true);
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event, 0));
    EXPECT_EQ(manual ? WAIT_OBJECT_0 : DWORD{WAIT_TIMEOUT}, WaitForSingleObject(event, 0));
    EXPECT_TRUE(SetEvent(event));
    EXPECT_TRUE(ResetEvent(event));
    EXPECT_EQ(DWORD{WAIT_TIMEOUT}, WaitForSingleObject(event, kSoonMs));
    EXPECT_TRUE(CloseHandle(event));
  }
}

TEST(ThreadsTest, ANameIsOneEventUntilItsLastHandleCloses) {
  SetLastError(7);
  const HANDLE first = Event(true, false, L"CorvaneThreadsTest");
  EXPECT_EQ(0u, GetLastError());
  const HANDLE second = Event(false, true, L"CorvaneThreadsTest");  // as it is, not as asked for
  EXPECT_EQ(DWORD{ERROR_ALREADY_EXISTS}, GetLastError());
  EXPECT_NE(first, second);
  EXPECT_EQ(DWORD{WAIT_TIMEOUT}, WaitForSingleObject(second, 0));
  SetEvent(second);
  EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(first, 0));
  EXPECT_TRUE(CloseHandle(first));
  EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(second, 0));
  EXPECT_TRUE(CloseHandle(second));
  const HANDLE another = Event(true, false, L"CorvaneThreadsTest");
  EXPECT_EQ(0u, GetLastError());
  EXPECT_EQ(DWORD{WAIT_TIMEOUT}, WaitForSingleObject(another, 0));
  CloseHandle(another);
}

TEST(ThreadsTest, RefusesHandlesThatAreNotOpen) {
  const HANDLE closed = Event(true, true);
  CloseHandle(closed);
  for (const HANDLE handle : {HANDLE{nullptr}, closed}) {
    SCOPED_TRACE(handle ? "closed" : "null");
    const auto isRefused = [](BOOL done) {
      const bool refused = !done && GetLastError() == ERROR_INVALID_HANDLE;
      SetLastError(0);
      return refused;
    };
    EXPECT_TRUE(isRefused(SetEvent(handle)));
    EXPECT_TRUE(isRefused(ResetEvent(handle)));
    EXPECT_TRUE(isRefused(CloseHandle(handle)));
    EXPECT_TRUE(isRefused(WaitForSingleObject(handle, INFINITE) != WAIT_FAILED));
  }
  const HANDLE many[MAXIMUM_WAIT_OBJECTS + 1] = {};
  for (const DWORD count : {DWORD{0}, DWORD{MAXIMUM_WAIT_OBJECTS + 1}}) {
    EXPECT_EQ(WAIT_FAILED, WaitForMultipleObjects(count, many, FALSE, 0));
    EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError());
  }
}

TEST(ThreadsTest, WaitsForAnyOrAll) {
  const HANDLE events[] = {Event(false, false), Event(false, true), Event(false, true)};
  const auto wait = [&](bool all) { return WaitForMultipleObjects(3, events, all, kSoonMs); };
  EXPECT_EQ(DWORD{WAIT_TIMEOUT}, wait(true));
  EXPECT_EQ(WAIT_OBJECT_0 + 1, wait(false)) << "a wait for all that fails takes none";
  EXPECT_EQ(WAIT_OBJECT_0 + 2, wait(false));
  EXPECT_EQ(DWORD{WAIT_TIMEOUT}, wait(false));
  SetEvent(events[1]);
  SetEvent(events[2]);
  const HANDLE thread = Start(&SignalLater, events[0]);
  EXPECT_EQ(WAIT_OBJECT_0, WaitForMultipleObjects(3, events, TRUE, kLongMs));
  EXPECT_EQ(DWORD{WAIT_TIMEOUT}, wait(false)) << "one that succeeds takes all";
  EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(thread, kLongMs));
  CloseHandle(thread);
  for (const HANDLE event : events) CloseHandle(event);
}

TEST(ThreadsTest, AThreadIsSignalledWhenItHasEnded) {
  const HANDLE event = Event(true, false);
  HANDLE threads[8];
  for (HANDLE& thread : threads) thread = Start(&WaitForIt, event);
  EXPECT_EQ(DWORD{WAIT_TIMEOUT}, WaitForMultipleObjects(8, threads, FALSE, kSoonMs));
  SetEvent(event);
  EXPECT_EQ(WAIT_OBJECT_0, WaitForMultipleObjects(8, threads, TRUE, INFINITE));
  for (const HANDLE thread : threads) {
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(thread, 0)) << "it stays signalled";
    EXPECT_FALSE(SetEvent(thread)) << "it is no event";
    EXPECT_TRUE(CloseHandle(thread));
  }
  ResetEvent(event);
  CloseHandle(Start(&SignalLater, event));  // which goes on without its handle
  EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event, kLongMs));
  CloseHandle(event);
}

struct Counter {
  CRITICAL_SECTION section;
  int count = 0;
};

unsigned __stdcall Count(void* argument) {
  auto& counter = *static_cast<Counter*>(argument);
  for (int i = 0; i < 10000; ++i) {
    EnterCriticalSection(&counter.section);
    EnterCriticalSection(&counter.section);
    ++counter.count;
    LeaveCriticalSection(&counter.section);
    LeaveCriticalSection(&counter.section);
  }
  return 0;
}

TEST(ThreadsTest, ACriticalSectionAdmitsOneThreadAsOftenAsItLikes) {
  Counter counter;
  InitializeCriticalSection(&counter.section);
  HANDLE threads[4];
  for (HANDLE& thread : threads) thread = Start(&Count, &counter);
  EXPECT_EQ(WAIT_OBJECT_0, WaitForMultipleObjects(4, threads, TRUE, INFINITE));
  for (const HANDLE thread : threads) CloseHandle(thread);
  EXPECT_EQ(40000, counter.count);
  DeleteCriticalSection(&counter.section);
}

}  // namespace
