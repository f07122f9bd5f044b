#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <new>
#include <string_view>
#include <thread>

#include <vx/Report.h>
#include <vx/os/Console.h>

namespace console = vxOS::console;

namespace {

// The text of a format and its arguments. Short texts take no memory from the heap; a long one is
// cut when there is none.
class FormattedText {
 public:
  FormattedText(const char* format, std::va_list arguments) {
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(short_, sizeof short_, format, arguments);
    if (length >= static_cast<int>(sizeof short_)) formatLong(format, again, length);
    va_end(again);
  }

  char* text() { return long_ ? long_.get() : short_; }

 private:
  void formatLong(const char* format, std::va_list arguments, int length) {
    const std::size_t size = static_cast<std::size_t>(length) + 1;
    long_.reset(new (std::nothrow) char[size]);
    if (long_) std::vsnprintf(long_.get(), size, format, arguments);
  }

  char short_[1024] = "";
  std::unique_ptr<char[]> long_;
};

void blankControlCharacters(char* text) {
  for (; *text != '\0'; ++text) {
    if (static_cast<unsigned char>(*text) < ' ' || *text == '\x7f') *text = ' ';
  }
}

// What stands on the last line of standard error, as far as the default sinks wrote it.
enum class LastLine { kNothing, kText, kStatus };
constinit LastLine lastLine = LastLine::kNothing;

bool endsLine(std::string_view text) {
  return text.ends_with('\n');
}

void clearStatus() {
  if (lastLine != LastLine::kStatus) return;
  console::writeError("\r\x1b[K");
  lastLine = LastLine::kNothing;
}

void startLine() {
  clearStatus();
  if (lastLine == LastLine::kText) console::writeError("\n");
  lastLine = LastLine::kNothing;
}

// The last status stays readable when the process exits.
struct EndOfStatus {
  ~EndOfStatus() {
    if (lastLine == LastLine::kStatus) console::writeError("\n");
  }
};
const EndOfStatus endOfStatus;

// Without line wrapping a status that is wider than the terminal still fills one line only.
void showStatusInPlace(const char* text) {
  console::writeError("\x1b[?7l");
  console::writeError(text);
  console::writeError("\x1b[?7h");
  lastLine = LastLine::kStatus;
}

void writeError(const char* text) {
  if (*text == '\0') return;
  clearStatus();
  console::writeError(text);
  lastLine = endsLine(text) ? LastLine::kNothing : LastLine::kText;
}

void writeUser(const char* text) {
  startLine();
  console::writeError(text);
  if (!endsLine(text)) console::writeError("\n");
}

void writeStatus(const char* text) {
  if (*text == '\0') {
    clearStatus();
  } else if (console::errorIsTerminal()) {
    startLine();
    showStatusInPlace(text);
  } else {
    writeUser(text);
  }
}

void sleepMilliseconds(unsigned int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

constexpr RptSinks kDefaultSinks = {writeError, writeUser, writeStatus, console::escapePressed,
                                    sleepMilliseconds};
constinit RptSinks sinks = kDefaultSinks;

constinit std::atomic<bool> abortAsked = false;
constinit bool interruptCaught = false;

void noteInterrupt(int) {
  std::signal(SIGINT, SIG_DFL);
  console::releaseKeys();
  abortAsked = true;
}

template <class Sink>
Sink orDefault(Sink sink, Sink defaultSink) {
  return sink != nullptr ? sink : defaultSink;
}

}  // namespace

void rptVError(const char* format, va_list arguments) {
  sinks.error(FormattedText(format, arguments).text());
}

void rptError(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  rptVError(format, arguments);
  va_end(arguments);
}

void rptUser(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  sinks.user(FormattedText(format, arguments).text());
  va_end(arguments);
}

void rptStatus(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  FormattedText status(format, arguments);
  va_end(arguments);
  blankControlCharacters(status.text());
  sinks.status(status.text());
}

void rptClearStatus() {
  sinks.status("");
}

bool rptCheckAbort() {
  if (!abortAsked && sinks.checkAbort()) abortAsked = true;
  return abortAsked;
}

void rptResetAbort() {
  if (!abortAsked.exchange(false)) return;
  sinks.checkAbort();  // keys pressed meanwhile asked for the same
  if (interruptCaught) rptCatchInterrupt();
}

void rptCatchInterrupt() {
  interruptCaught = true;
  std::signal(SIGINT, noteInterrupt);
}

void rptSleep(unsigned int milliseconds) {
  sinks.sleep(milliseconds);
}

RptSinks rptSetSinks(const RptSinks* replacements) {
  const RptSinks previous = sinks;
  const RptSinks& wanted = replacements != nullptr ? *replacements : kDefaultSinks;
  sinks = {orDefault(wanted.error, kDefaultSinks.error), orDefault(wanted.user, kDefaultSinks.user),
           orDefault(wanted.status, kDefaultSinks.status),
           orDefault(wanted.checkAbort, kDefaultSinks.checkAbort),
           orDefault(wanted.sleep, kDefaultSinks.sleep)};
  return previous;
}
