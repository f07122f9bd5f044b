#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>
#include <memory>
#include <thread>
#include <utility>

#include <kilnbase/detail/assert.h>
#include <kilnbase/services/MorlaTrace.h>
#include <kilnbase/services/detail/traceFormat.h>
#include <vx/File.h>
#include <vx/FileLock.h>
#include <vx/Filename.h>
#include <vx/Format.h>
#include <vx/LocalTime.h>
#include <vx/MappedFile.h>
#include <vx/Process.h>
#include <vx/Uuid.h>

using namespace vxKilnBase::detail;
using vxOS::Filename;
using vxString::CString;

namespace {

constexpr std::uint32_t kNowhere = 0xffffffff;
// What a view has beyond the granularity, so that a record that begins in it ends in it.
constexpr std::uint32_t kViewOverlap = 512;

constinit int currentLevel = 0;

// Writes to the position file before closing: stores through a view need not set the time of a
// file, a write does. `tracelog --prune` takes the time for the end of this process.
struct MarkEnd {
  void operator()(std::FILE* positionFile) const {
    std::fputc(kTracePositionMagic.front(), positionFile);
    std::fclose(positionFile);
  }
};

struct Ring {
  Ring() = default;
  ~Ring() { currentLevel = 0; }
  Ring(const Ring&) = delete;
  Ring& operator=(const Ring&) = delete;

  std::unique_ptr<vxOS::MemoryMappedFile> file;
  vxOS::FileMapping view;
  std::unique_ptr<std::FILE, MarkEnd> endMark;
  vxOS::FileMapping positionView;  // nothing mapped: the lines go on without a position file
  vxOS::FileLock lock;
  std::uint32_t granularity = 1;
  TracePosition at;
  // After another `initialize`: where the oldest line stood in the file before.
  std::uint32_t staleOldest = kNowhere;
};

Ring ring;
CString logDirectory;
CString logName;

// A line while it is put together. The date and time at its beginning stay good for a second.
constinit char line[256] = {};
constinit std::time_t stampedSecond = 0;
constinit std::size_t stampLength = 0;  // 0: there is no stamp

// Stores both copies, one after the other: a kill leaves the first one whole with the new position,
// or the second one with the position before. The fences keep the stores in this order, which a
// kill and other processes see.
void publishPosition(const TraceWords& words) {
  auto* const bytes = static_cast<char*>(ring.positionView.data());
  if (!bytes) return;
  for (const std::size_t offset : kTraceCopyOffsets) {
    auto* const copy = reinterpret_cast<std::uint64_t*>(bytes + offset);
    std::atomic_thread_fence(std::memory_order_release);
    const auto store = [&](std::size_t i) {
      std::atomic_ref(copy[i]).store(words[i], std::memory_order_relaxed);
    };
    store(0);
    store(1);
    store(2);
    store(3);
  }
  std::atomic_thread_fence(std::memory_order_release);
}

// Maps the part of the ring that holds the record at `offset`. Null when that fails.
char* recordAt(std::uint32_t offset) {
  const auto* const mapped = static_cast<char*>(ring.view.data());
  if (!mapped || offset - ring.view.offset() >= ring.granularity) {
    if (!ring.file) return nullptr;
    const std::uint32_t base = offset - offset % ring.granularity;
    const std::uint32_t length = std::min(ring.granularity + kViewOverlap, ring.at.size - base);
    if (!ring.view.map(*ring.file, base, length)) return nullptr;
  }
  return static_cast<char*>(ring.view.data()) + (offset - ring.view.offset());
}

// The length of the record at `offset`, whose bytes begin at `record`. 0 when the length cannot be:
// the bytes are not those that this process wrote.
std::uint32_t lengthOf(const char* record, std::uint32_t offset) {
  std::uint16_t length = 0;
  std::memcpy(&length, record, sizeof length);
  const bool possible = length % 2 == 0 && length > kTraceHeader &&
                        length < traceSlot(kTraceLongest) + kTraceTail &&
                        length <= ring.at.size - offset;
  return possible ? length : 0;
}

std::uint32_t endOf(std::uint32_t offset, std::uint32_t length) {
  return offset + length == ring.at.size ? 0 : offset + length;
}

// Gives up the lines of which a record of `length` bytes at `next` overwrites something. The view
// holds `next` and so the beginnings of all these lines. A length that cannot be ends the walk:
// where later lines begin is not known, so they are given up, too.
TracePosition withoutOverwritten(TracePosition at, std::uint32_t length) {
  while (at.held > 0 && at.oldest - at.next < length) {
    const auto* const view = static_cast<const char*>(ring.view.data());
    const std::uint32_t dropped = lengthOf(view + (at.oldest - ring.view.offset()), at.oldest);
    at.held = dropped == 0 ? 0 : at.held - 1;
    at.oldest = endOf(at.oldest, dropped);
  }
  return at;
}

// Adds the line's first `bytes` bytes, terminator included. A process that is killed on the way
// leaves a position file that tells of whole lines alone: lines are given up before their bytes
// change, and the new line counts when all its bytes stand.
void append(std::uint32_t bytes) {
  char* const record = recordAt(ring.at.next);
  if (!record) return;
  const std::uint32_t needed = traceSlot(bytes);
  const std::uint32_t room = ring.at.size - ring.at.next;
  const std::uint32_t length = room - needed < kTraceTail ? room : needed;
  if (ring.staleOldest - ring.at.next < length) ring.staleOldest = kNowhere;
  TracePosition at = withoutOverwritten(ring.at, length);
  if (at.held != ring.at.held) publishPosition(traceWords(at));

  const auto header = static_cast<std::uint16_t>(length);
  std::memcpy(record, &header, sizeof header);
  std::memcpy(record + kTraceHeader, line, bytes);

  if (at.held == 0) at.oldest = at.next;
  at.next = endOf(at.next, length);
  ++at.lines;
  ++at.held;
  publishPosition(traceWords(at));
  ring.at = at;
}

// Begins the line with date and time. Returns their length; 0 when the time has no local form.
std::size_t stampLine() {
  const std::time_t now = std::time(nullptr);
  if (now == stampedSecond && stampLength != 0) return stampLength;
  std::tm local = {};
  stampLength = 0;
  if (!vxOS::localTime(now, local)) return 0;
  const int length =
      std::snprintf(line, sizeof line, "%d/%02d/%02d %02d:%02d:%02d ", local.tm_year + 1900,
                    local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
  stampedSecond = now;
  return stampLength = static_cast<std::size_t>(length);
}

// Makes line feeds blanks. Returns the end of the text. (The functions of the C library read the
// text in wider pieces than it was written in a moment ago, for which the processor waits longer
// than this loop takes.)
char* replaceLineFeeds(char* text) {
  for (; *text != '\0'; ++text)
    if (*text == '\n') *text = ' ';
  return text;
}

// Out of line, so that a line above the level finds few instructions before its test.
[[gnu::noinline]] void writeLine(MorlaTrace::Subsystem subsystem, const char* format,
                                 std::va_list arguments) {
  const auto area = static_cast<std::size_t>(subsystem);
  KILN_ASSERT(area < kTraceTags.size());
  if (area >= kTraceTags.size()) return;
  const std::size_t stamp = stampLine();
  if (stamp == 0) return;
  const std::size_t prefix = stamp + kTraceTags[area].copy(line + stamp, std::string_view::npos);
  if (MR_vsnprintf(line + prefix, kTraceLongest - prefix, format, arguments) < 0) return;
  append(static_cast<std::uint32_t>(replaceLineFeeds(line + prefix) + 1 - line));
}

// The whole of a function that writes lines of one level.
#define KILN_WRITE_LINE_AT_LEVEL(level)    \
  if (currentLevel < (level)) return;      \
  std::va_list arguments;                  \
  va_start(arguments, format);             \
  writeLine(subsystem, format, arguments); \
  va_end(arguments)

std::uint32_t ringSize(std::size_t size) {
  const auto asked = static_cast<std::int32_t>(static_cast<std::uint32_t>(size));
  if (asked < static_cast<std::int32_t>(kTraceSmallestRing)) return kTraceSmallestRing;
  return (static_cast<std::uint32_t>(asked) + 255) / 256 * 256;
}

// Keeps the places of the ring before that a ring of `size` bytes has. The place of the oldest line
// is below `next`, or above by less than kTraceTail.
void startRing(std::uint32_t size) {
  TracePosition& at = ring.at;
  if (at.held > 0 && ring.staleOldest == kNowhere) ring.staleOldest = at.oldest;
  if (at.next > size - kTraceTail) {
    at.next = 0;
    ring.staleOldest = kNowhere;
  }
  at = {at.next, at.next, 0, 0, size};
}

void startPositionFile(const CString& path) {
  ring.positionView.unmap();
  ring.endMark.reset();
  vxOS::MemoryMappedFile file;
  if (!file.createFile(path, kTracePositionBytes, vxOS::MemoryMappedFile::kReadWrite)) return;
  void* const bytes = ring.positionView.map(file, 0, kTracePositionBytes);
  if (!bytes) return;
  publishPosition(traceWords(ring.at));
  kTracePositionMagic.copy(static_cast<char*>(bytes), kTracePositionMagic.size());
  ring.endMark.reset(vxOS::openFile(path.view(), "r+b"));
}

// A reader that asks whether the process lives holds the lock for a moment.
void lockRing(const CString& path) {
  for (int tries = 0; tries < 20 && !ring.lock.acquire(path); ++tries)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

CString environmentOr(const char* name, const CString& otherwise) {
  return vxOS::hasEnvironmentVariable(name) ? vxOS::environmentVariable(name) : otherwise;
}

CString logFileName(const std::tm& now) {
  const CString user = environmentOr("USERNAME", environmentOr("USER", "Unknown User"));
  const CString stamp = CString::format("%02d%02d%04d%02d%02d", now.tm_mon, now.tm_mday,
                                        now.tm_year + 1900, now.tm_hour, now.tm_min);
  return "MorlaTraceLog-" + user + "-" + logName + "-" + stamp + ".log";
}

void writeTextLine(void* file, const char* text) {
  std::fprintf(static_cast<std::FILE*>(file), "%s\n", text);
}

}  // namespace

bool MorlaTrace::initialize(const char* directory, std::size_t size, int level) try {
  const CString name = "MorlaTrace-" + vxOS::Uuid::generate().asString() + ".dat";
  const CString path = Filename(directory, name).path();
  const std::uint32_t bytes = ringSize(size);
  auto file = std::make_unique<vxOS::MemoryMappedFile>();
  if (!file->createFile(path, bytes, vxOS::MemoryMappedFile::kReadWrite)) return false;
  ring.view.unmap();
  ring.file = std::move(file);
  ring.granularity = static_cast<std::uint32_t>(vxOS::FileMapping::getGranularity());
  startRing(bytes);
  lockRing(path);
  startPositionFile(path + ".pos");
  currentLevel = level;
  return true;
} catch (const std::exception&) {
  return false;
}

bool MorlaTrace::enabled() {
  return currentLevel > 0;
}

void MorlaTrace::trace1(Subsystem subsystem, const char* format, ...) {
  KILN_WRITE_LINE_AT_LEVEL(1);
}

void MorlaTrace::trace2(Subsystem subsystem, const char* format, ...) {
  KILN_WRITE_LINE_AT_LEVEL(2);
}

void MorlaTrace::trace3(Subsystem subsystem, const char* format, ...) {
  KILN_WRITE_LINE_AT_LEVEL(3);
}

void MorlaTrace::trace4(Subsystem subsystem, const char* format, ...) {
  KILN_WRITE_LINE_AT_LEVEL(4);
}

// Lengths that cannot be and texts without an end stop the walk: something else has written there.
void MorlaTrace::dump(void (*callback)(void* context, const char* text), void* context) {
  if (!enabled() || ring.staleOldest != kNowhere) return;
  std::uint32_t offset = ring.at.oldest;
  for (std::uint32_t left = ring.at.held; left > 0; --left) {
    const char* const record = recordAt(offset);
    const std::uint32_t length = record ? lengthOf(record, offset) : 0;
    if (length == 0 || !std::memchr(record + kTraceHeader, '\0', length - kTraceHeader)) return;
    callback(context, record + kTraceHeader);
    offset = endOf(offset, length);
  }
}

void MorlaTrace::initLog(const char* directory, const char* name) try {
  logDirectory = directory;
  logName = name;
} catch (const std::exception&) {
  logDirectory = CString();
}

void MorlaTrace::dumpLog() try {
  std::tm now = {};
  if (!enabled() || logDirectory.isEmpty() || !vxOS::localTime(std::time(nullptr), now)) return;
  static_cast<void>(Filename(logDirectory).makeDir());
  const Filename name(logDirectory, logFileName(now));
  std::FILE* const file = vxOS::openFile(name.path().view(), "w");
  if (!file) return;
  dump(writeTextLine, file);
  std::fclose(file);
} catch (const std::exception&) {
  return;
}

void MorlaTrace::finalize() {
  currentLevel = 0;
}
