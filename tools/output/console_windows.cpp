// For Windows, where the system calls a handler on a thread of its own.
#include <io.h>
#include <lmcons.h>

#include <atomic>
#include <cstdlib>

#include "base/utf8.h"
#include "corvane/platform.h"
#include "tools/output/console.h"

namespace Corvane::Tool {
namespace {

// The handler gets no context: the event of the one interruption, null while there is none.
std::atomic<HANDLE> g_event{nullptr};

BOOL WINAPI OnConsoleEvent(DWORD) {
  const HANDLE event = g_event.exchange(nullptr);
  return event && SetEvent(event);  // false: the system ends the process
}

}  // namespace

struct Interruption::State {
  HANDLE event = nullptr;
};

bool ErrorStreamIsTerminal() { return _isatty(2) != 0; }

std::string LoginName() {
  if (const wchar_t* const name = _wgetenv(L"USERNAME"); name && *name) return ToUtf8(name);
  wchar_t account[UNLEN + 1];
  DWORD chars = UNLEN + 1;
  return GetUserNameW(account, &chars) ? ToUtf8(account) : "";
}

Interruption::Interruption() : m_state(std::make_unique<State>()) {
  m_state->event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  g_event = m_state->event;
  SetConsoleCtrlHandler(&OnConsoleEvent, TRUE);
}

// The event stays for a handler that is about to set it.
Interruption::~Interruption() {
  SetConsoleCtrlHandler(&OnConsoleEvent, FALSE);
  g_event = nullptr;
}

bool Interruption::Wait(std::chrono::milliseconds time) {
  return WaitForSingleObject(m_state->event, static_cast<DWORD>(time.count())) == WAIT_OBJECT_0;
}

}  // namespace Corvane::Tool
