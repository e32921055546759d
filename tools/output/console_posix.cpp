// For POSIX systems: the signals are blocked, and taken by the thread that waits; no handler runs.
#include <pwd.h>
#include <signal.h>
#include <time.h>
#include <unistd.h>

#include <cstdlib>

#include "tools/output/console.h"

namespace Corvane::Tool {

struct Interruption::State {
  sigset_t taken;
  sigset_t before;
};

bool ErrorStreamIsTerminal() { return isatty(STDERR_FILENO) == 1; }

std::string LoginName() {
  for (const char* const variable : {"USER", "LOGNAME"}) {
    const char* const name = std::getenv(variable);
    if (name && *name) return name;
  }
  const passwd* const account = getpwuid(geteuid());
  return account && account->pw_name ? account->pw_name : "";
}

Interruption::Interruption() : m_state(std::make_unique<State>()) {
  sigemptyset(&m_state->taken);
  for (const int signal : {SIGINT, SIGTERM}) {
    struct sigaction action {};
    const bool isIgnored = sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
    if (!isIgnored) sigaddset(&m_state->taken, signal);
  }
  pthread_sigmask(SIG_BLOCK, &m_state->taken, &m_state->before);
}

Interruption::~Interruption() { pthread_sigmask(SIG_SETMASK, &m_state->before, nullptr); }

bool Interruption::Wait(std::chrono::milliseconds time) {
  const timespec limit{static_cast<time_t>(time.count() / 1000),
                       static_cast<long>(time.count() % 1000) * 1'000'000};
  if (sigtimedwait(&m_state->taken, nullptr, &limit) < 0) return false;
  // One thread that does not block them is enough for the next one to end the process.
  pthread_sigmask(SIG_UNBLOCK, &m_state->taken, nullptr);
  return true;
}

}  // namespace Corvane::Tool
