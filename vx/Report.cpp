#include <atomic>
#include <bitset>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <thread>

#include <vx/Report.h>
#include <vx/os/Console.h>

namespace console = vxOS::console;

namespace {

// The text of a format and its arguments. A short text takes no memory from the heap; a long text
// is cut when there is no memory. When the arguments cannot be formatted, the text is the format
// itself.
class FormattedText {
 public:
  FormattedText(const char* format, std::va_list arguments) {
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(short_, sizeof short_, format, arguments);
    if (length < 0) std::strncpy(short_, format, sizeof short_ - 1);
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

// The control characters are those of ASCII and U+0080 to U+009F, which are two bytes in UTF-8.
void blankControlCharacters(char* text) {
  for (; *text != '\0'; ++text) {
    const auto byte = static_cast<unsigned char>(text[0]);
    const auto next = static_cast<unsigned char>(text[1]);
    const bool isPair = byte == 0xC2 && next >= 0x80 && next <= 0x9F;
    if (isPair) text[1] = ' ';
    if (isPair || byte < ' ' || byte == 0x7F) text[0] = ' ';
  }
}

// The content of the last line of standard error, as far as the default sinks wrote it.
enum class LastLine { kNothing, kText, kStatus };
constinit LastLine lastLine = LastLine::kNothing;

bool endsLine(std::string_view text) {
  return text.ends_with('\n');
}

constexpr char kClearLine[] = "\r\x1b[K";

void clearStatus() {
  if (lastLine != LastLine::kStatus) return;
  console::writeError(kClearLine);
  lastLine = LastLine::kNothing;
}

// The text to be written before a text that begins a line.
const char* lineStart() {
  if (lastLine == LastLine::kStatus) return kClearLine;
  return lastLine == LastLine::kText ? "\n" : "";
}

// Ends the line of the last status when the process that showed the status exits, so that the
// prompt of the shell does not overwrite it.
struct EndOfStatus {
  ~EndOfStatus() {
    if (lastLine == LastLine::kStatus && process == console::processId()) console::writeError("\n");
  }
  long process = 0;
};
EndOfStatus endOfStatus;

// A single write, so that the line does not flicker. Line wrapping is off, so that a status wider
// than the terminal stays on one line. A text of more than 4000 bytes is cut.
void showStatusInPlace(const char* text) {
  char line[4096];
  std::snprintf(line, sizeof line, "%s\x1b[?7l%.4000s\x1b[?7h", lineStart(), text);
  console::writeError(line);
  lastLine = LastLine::kStatus;
  endOfStatus.process = console::processId();
}

void writeError(const char* text) {
  if (*text == '\0') return;
  clearStatus();
  console::writeError(text);
  lastLine = endsLine(text) ? LastLine::kNothing : LastLine::kText;
}

void writeUser(const char* text) {
  console::writeError(lineStart());
  console::writeError(text);
  if (!endsLine(text)) console::writeError("\n");
  lastLine = LastLine::kNothing;
}

void writeStatus(const char* text) {
  if (*text == '\0') {
    clearStatus();
  } else if (console::errorIsTerminal()) {
    showStatusInPlace(text);
  } else {
    writeUser(text);
  }
}

void confirmOK(const char* text) {
  writeUser(text);
  if (!console::mayReadInput()) return;
  rptReleaseKeys();
  console::writeError("(press Return) ");
  std::clearerr(stdin);  // Ctrl-D may have confirmed an earlier message
  int c;
  do {
    c = std::getchar();
  } while (c != '\n' && c != EOF);
  if (c == EOF) lastLine = LastLine::kText;
}

void writeDebug(int, const char* text) {
  writeError(text);
}

void sleepMilliseconds(unsigned int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

constexpr RptSinks kDefaultSinks = {
    writeError,        writeUser, writeStatus, console::escapePressed,
    sleepMilliseconds, confirmOK, writeDebug};
constinit RptSinks sinks = kDefaultSinks;

constinit int debugLevel = 0;
constinit std::bitset<1024> debugCodes;

constinit std::atomic<bool> abortAsked = false;
constinit std::atomic<bool> interruptSpent = false;  // noteInterrupt has restored the default
constinit bool keysWatched = false;

void noteInterrupt(int) {
  const int error = errno;
  std::signal(SIGINT, SIG_DFL);
  interruptSpent = true;
  console::releaseKeys();
  abortAsked = true;
  errno = error;
}

bool isDebugCode(int code) {
  return code >= 0 && code < static_cast<int>(debugCodes.size());
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

void rptConfirmOK(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  sinks.confirmOK(FormattedText(format, arguments).text());
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
  keysWatched = true;
  if (!abortAsked && sinks.checkAbort()) abortAsked = true;
  return abortAsked;
}

void rptResetAbort() {
  abortAsked = false;
  if (interruptSpent.exchange(false)) rptCatchInterrupt();
  if (keysWatched) sinks.checkAbort();  // takes the keys pressed meanwhile
}

void rptReleaseKeys() {
  console::releaseKeys();
}

void rptCatchInterrupt() {
  if (std::signal(SIGINT, noteInterrupt) == SIG_IGN) std::signal(SIGINT, SIG_IGN);
}

void rptSleep(unsigned int milliseconds) {
  sinks.sleep(milliseconds);
}

void rptDebug(int level, const char* format, ...) {
  if (level > debugLevel) return;
  va_list arguments;
  va_start(arguments, format);
  sinks.debug(level, FormattedText(format, arguments).text());
  va_end(arguments);
}

void rptSetDebugLevel(int level) {
  debugLevel = level;
}

bool rptDebugCodeIsSet(int code) {
  return isDebugCode(code) && debugCodes[static_cast<std::size_t>(code)];
}

void rptSetDebugCode(int code, bool on) {
  if (isDebugCode(code)) debugCodes[static_cast<std::size_t>(code)] = on;
}

RptSinks rptSetSinks(const RptSinks* replacements) {
  const RptSinks previous = sinks;
  const RptSinks& wanted = replacements != nullptr ? *replacements : kDefaultSinks;
  sinks = {orDefault(wanted.error, kDefaultSinks.error),
           orDefault(wanted.user, kDefaultSinks.user),
           orDefault(wanted.status, kDefaultSinks.status),
           orDefault(wanted.checkAbort, kDefaultSinks.checkAbort),
           orDefault(wanted.sleep, kDefaultSinks.sleep),
           orDefault(wanted.confirmOK, kDefaultSinks.confirmOK),
           orDefault(wanted.debug, kDefaultSinks.debug)};
  return previous;
}
