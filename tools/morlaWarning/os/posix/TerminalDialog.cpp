#include <cerrno>
#include <fcntl.h>
#include <string>
#include <termios.h>
#include <unistd.h>

#include "tools/morlaWarning/Dialog.h"
#include "tools/morlaWarning/Prompt.h"

namespace morlawarning {

namespace {

// The terminal that controls this process, whatever the standard streams are.
class Terminal {
 public:
  Terminal() : file_(open("/dev/tty", O_RDWR | O_CLOEXEC)) {}
  ~Terminal() {
    if (isOpen()) close(file_);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  bool isOpen() const { return file_ >= 0; }

  // Keys that were pressed before the question are no answer.
  void dropInput() { tcflush(file_, TCIFLUSH); }

  bool write(std::string_view text) {
    while (!text.empty()) {
      const ssize_t count = ::write(file_, text.data(), text.size());
      if (count < 0 && errno != EINTR) return false;
      if (count > 0) text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
  }

  // A line without its end. Nothing at the end of the input, which cuts off a last line.
  std::optional<std::string> readLine() {
    std::string line;
    for (;;) {
      char c = '\0';
      const ssize_t count = read(file_, &c, 1);
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) return std::nullopt;
      if (c == '\n') return line;
      line += c;
    }
  }

 private:
  int file_;
};

int ask(Terminal& terminal, const Warning& warning) {
  terminal.dropInput();
  if (!terminal.write(questionText(warning))) return kNoButton;
  while (terminal.write(promptText(warning))) {
    const std::optional<std::string> line = terminal.readLine();
    if (!line) break;
    if (const std::optional<int> button = buttonFor(*line, warning.buttons.size())) return *button;
  }
  return kNoButton;
}

}  // namespace

std::optional<int> showOnTerminal(const Warning& warning) {
  Terminal terminal;
  if (!terminal.isOpen()) return std::nullopt;
  return ask(terminal, warning);
}

}  // namespace morlawarning
