// Who runs the tool, and where: the user, the terminal and its Ctrl-C.
#ifndef CORVANE_TOOLS_OUTPUT_CONSOLE_H_
#define CORVANE_TOOLS_OUTPUT_CONSOLE_H_

#include <chrono>
#include <memory>
#include <string>

namespace Corvane::Tool {

bool ErrorStreamIsTerminal();

// The user's login name as UTF-8: of the environment (USER, LOGNAME; on Windows USERNAME), else as
// the system's accounts have it; empty when neither knows one.
std::string LoginName();

// Takes Ctrl-C and requests to end (SIGINT, SIGTERM; on Windows the console's events) while it
// lives: the first one is told by Wait, a second one ends the process at once, as the first does
// without this. What the process ignores stays ignored. One at a time; for the main thread, before
// there are others.
class Interruption {
 public:
  Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;
  ~Interruption();

  // Whether the first one has come, waiting for it as long as given. For one thread, until that has
  // been told.
  bool Wait(std::chrono::milliseconds time);

 private:
  struct State;
  const std::unique_ptr<State> m_state;
};

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_OUTPUT_CONSOLE_H_
