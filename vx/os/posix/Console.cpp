#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <vx/os/Console.h>

namespace vxOS::console {

namespace {

termios savedMode;
std::atomic<bool> keysTaken = false;

struct ReleaseAtExit {
  ~ReleaseAtExit() { releaseKeys(); }
};
const ReleaseAtExit releaseAtExit;

// A background job must leave the terminal alone; touching it would stop the process. (A terminal
// that does not control the process has no foreground group.)
bool inForeground() {
  const pid_t foreground = tcgetpgrp(STDIN_FILENO);
  return foreground == -1 || foreground == getpgrp();
}

// Shells set their own mode while the process is suspended, so the mode is looked at every time.
void takeKeys() {
  termios mode;
  if (tcgetattr(STDIN_FILENO, &mode) != 0 || (mode.c_lflag & ICANON) == 0) return;
  if (!keysTaken) {
    savedMode = mode;
    keysTaken = true;
  }
  mode.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
  mode.c_cc[VMIN] = 0;
  mode.c_cc[VTIME] = 0;
  tcsetattr(STDIN_FILENO, TCSANOW, &mode);
}

// Finds the ESC key among the keys as they come. Cursor and function keys arrive as ESC followed by
// "[" or "O".
class EscapeFinder {
 public:
  void look(std::string_view keys) {
    for (const char key : keys) {
      found_ |= pending_ && key != '[' && key != 'O';
      pending_ = key == '\x1b';
    }
  }
  bool found() const { return found_ || pending_; }

 private:
  bool found_ = false;
  bool pending_ = false;  // the last key was ESC
};

}  // namespace

bool errorIsTerminal() {
  const char* type = std::getenv("TERM");
  return isatty(STDERR_FILENO) != 0 && type != nullptr && std::strcmp(type, "dumb") != 0;
}

void writeError(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
}

bool escapePressed() {
  if (isatty(STDIN_FILENO) == 0 || !inForeground()) return false;
  takeKeys();
  EscapeFinder escape;
  char keys[64];
  pollfd input = {STDIN_FILENO, POLLIN, 0};
  while (poll(&input, 1, 0) == 1) {
    const ssize_t count = read(STDIN_FILENO, keys, sizeof keys);
    if (count <= 0) break;
    escape.look({keys, static_cast<std::size_t>(count)});
  }
  return escape.found();
}

void releaseKeys() noexcept {
  if (keysTaken && inForeground()) tcsetattr(STDIN_FILENO, TCSANOW, &savedMode);
}

}  // namespace vxOS::console
