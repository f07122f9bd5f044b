#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <mutex>
#include <new>

#include <vx/Memory.h>
#include <vx/Report.h>
#include <vx/os/Console.h>

namespace {

#ifdef NDEBUG
constexpr bool kTracked = false;
#else
constexpr bool kTracked = true;
#endif

// Stands in front of the caller's bytes, which need the strictest alignment of all types.
struct alignas(std::max_align_t) Block {
  Block* previous;
  Block* next;
  std::size_t bytes;
  const char* file;
  int line;
};

constinit Block head = {&head, &head, 0, nullptr, 0};  // the ring of all blocks begins here
constinit MaOutstanding outstanding = {};
std::mutex trackMutex;

void link(Block* block) {
  const std::scoped_lock lock(trackMutex);
  block->previous = head.previous;
  block->next = &head;
  block->previous->next = block->next->previous = block;
  ++outstanding.blocks;
  outstanding.bytes += block->bytes;
}

void unlink(Block* block) {
  const std::scoped_lock lock(trackMutex);
  assert(block->previous->next == block && block->next->previous == block);
  block->previous->next = block->next;
  block->next->previous = block->previous;
  --outstanding.blocks;
  outstanding.bytes -= block->bytes;
}

void* trackedMalloc(std::size_t bytes, int line, const char* file) {
  if (bytes > std::numeric_limits<std::size_t>::max() - sizeof(Block)) return nullptr;
  void* memory = std::malloc(sizeof(Block) + bytes);
  if (memory == nullptr) return nullptr;
  auto* block = new (memory) Block{nullptr, nullptr, bytes, file != nullptr ? file : "?", line};
  link(block);
  return block + 1;
}

void trackedFree(void* memory) {
  Block* block = static_cast<Block*>(memory) - 1;
  unlink(block);
  std::free(block);
}

// The part of a block that goes into a report.
struct Record {
  const char* file;
  int line;
  std::size_t bytes;
};

// Null when there is no memory for the records.
std::unique_ptr<Record[]> listBlocks(std::size_t& count) {
  const std::scoped_lock lock(trackMutex);
  count = outstanding.blocks;
  std::unique_ptr<Record[]> records(new (std::nothrow) Record[count]);
  Record* record = records.get();
  if (record == nullptr) return records;
  for (const Block* block = head.next; block != &head; block = block->next)
    *record++ = {block->file, block->line, block->bytes};
  return records;
}

bool isBefore(const Record& a, const Record& b) {
  const int files = std::strcmp(a.file, b.file);
  return files != 0 ? files < 0 : a.line < b.line;
}

// Reports the records from `first` to `last`, all of one place in the source.
void reportPlace(const Record* first, const Record* last) {
  std::size_t bytes = 0;
  for (const Record* record = first; record != last; ++record) bytes += record->bytes;
  rptError("Not freed: %zu bytes in %td blocks (file %s, line %d)\n", bytes, last - first,
           first->file, first->line);
}

// Reports at the end of the process, after everything that uses this library has been destroyed.
// The host's sinks are gone then, too. A forked child does not report the blocks of its parent.
struct ReportAtExit {
  ~ReportAtExit() {
    if (process != vxOS::console::processId()) return;
    rptSetSinks(nullptr);
    MA_reportOutstanding();
  }
  long process = vxOS::console::processId();
};
[[maybe_unused]] const ReportAtExit reportAtExit;

}  // namespace

void* MA_malloc(std::size_t bytes, int line, const char* file) {
  if constexpr (kTracked) return trackedMalloc(bytes, line, file);
  return std::malloc(std::max<std::size_t>(bytes, 1));
}

void MA_free(void* memory) {
  if constexpr (!kTracked) {
    std::free(memory);
  } else if (memory != nullptr) {
    trackedFree(memory);
  }
}

MaOutstanding MA_outstanding() {
  const std::scoped_lock lock(trackMutex);
  return outstanding;
}

void MA_reportOutstanding() {
  std::size_t count = 0;
  const std::unique_ptr<Record[]> records = listBlocks(count);
  if (!records) {
    rptError("Not freed: %zu blocks\n", count);
    return;
  }
  const Record* end = records.get() + count;
  std::sort(records.get(), records.get() + count, isBefore);
  for (const Record* first = records.get(); first != end;) {
    const Record* last = std::upper_bound(first, end, *first, isBefore);
    reportPlace(first, last);
    first = last;
  }
}
