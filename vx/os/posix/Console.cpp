#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <vx/os/Console.h>

namespace vxOS::console {

namespace {

constexpr tcflag_t kLineEditing = ICANON | ECHO;

termios savedMode;
std::atomic<pid_t> keysTakenBy =
    0;  // the process that changed the mode; 0 when the mode is restored

struct ReleaseAtExit {
  ~ReleaseAtExit() { releaseKeys(); }
};
const ReleaseAtExit releaseAtExit;

// A background job must leave the terminal alone, or the system stops the process. A terminal that
// does not control the process has no foreground group (-1).
bool inForeground() {
  const pid_t foreground = tcgetpgrp(STDIN_FILENO);
  return foreground == -1 || foreground == getpgrp();
}

// SA_RESETHAND has restored the default action, so raising the signal again ends or suspends the
// process as usual.
void releaseAndRaise(int signal) {
  const int error = errno;
  releaseKeys();
  raise(signal);
  errno = error;
}

// Signals that the host handles or ignores stay with the host.
void releaseKeysOnSignals() {
  for (const int signal : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGABRT, SIGTSTP}) {
    struct sigaction action = {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) continue;
    action = {};
    action.sa_handler = releaseAndRaise;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
    sigaction(signal, &action, nullptr);
  }
}

// Reads return each key at once. They wait for one key, so that other readers of the terminal do
// not take an empty read for the end of the input.
void setKeyMode(termios mode) {
  mode.c_lflag &= ~kLineEditing;
  mode.c_cc[VMIN] = 1;
  mode.c_cc[VTIME] = 0;
  tcsetattr(STDIN_FILENO, TCSANOW, &mode);
}

// A shell sets its own mode while the process is suspended, so the mode is read every time. A
// signal may release the keys at any moment, even before the mode is set.
void takeKeys() {
  termios mode;
  if (tcgetattr(STDIN_FILENO, &mode) != 0 || (mode.c_lflag & kLineEditing) == 0) return;
  releaseKeysOnSignals();
  keysTakenBy = 0;  // no handler uses the mode while it is being saved
  savedMode = mode;
  keysTakenBy = getpid();
  setKeyMode(mode);
  if (keysTakenBy == 0) tcsetattr(STDIN_FILENO, TCSANOW, &savedMode);
}

// Finds the ESC key among the keys in the order of their arrival. Cursor and function keys arrive
// as ESC followed by "[" or "O", over a slow line a moment later.
class EscapeFinder {
 public:
  void look(std::string_view keys) {
    for (const char key : keys) {
      found_ |= pending_ && key != '[' && key != 'O';
      pending_ = key == '\x1b';
    }
  }
  bool found() const { return found_ || pending_; }

  // How many milliseconds to wait for the next key.
  int longestGap() const { return pending_ ? 50 : 0; }

 private:
  bool found_ = false;
  bool pending_ = false;  // the last key was ESC
};

}  // namespace

bool errorIsTerminal() {
  const char* variable = std::getenv("TERM");
  const std::string_view type = variable != nullptr ? variable : "";
  return isatty(STDERR_FILENO) != 0 && !type.empty() && type != "dumb";
}

void writeError(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
}

bool mayReadInput() {
  return isatty(STDIN_FILENO) != 0 && inForeground();
}

bool escapePressed() {
  if (!mayReadInput()) return false;
  takeKeys();
  EscapeFinder escape;
  char keys[64];
  pollfd input = {STDIN_FILENO, POLLIN, 0};
  while (poll(&input, 1, escape.longestGap()) == 1) {
    const ssize_t count = read(STDIN_FILENO, keys, sizeof keys);
    if (count <= 0) break;
    escape.look({keys, static_cast<std::size_t>(count)});
  }
  return escape.found();
}

void releaseKeys() noexcept {
  pid_t self = getpid();
  if (keysTakenBy != self || !inForeground()) return;
  if (keysTakenBy.compare_exchange_strong(self, 0)) {
    tcsetattr(STDIN_FILENO, TCSANOW, &savedMode);
  }
}

long processId() {
  return getpid();
}

}  // namespace vxOS::console
