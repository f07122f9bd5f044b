#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <tuple>

#include <vx/Memory.h>
#include <vx/Report.h>
#include <vx/os/Console.h>

namespace {

#ifdef NDEBUG
constexpr bool kTracked = false;
#else
constexpr bool kTracked = true;
#endif

// Stands in front of the caller's bytes, which need the strictest alignment.
struct alignas(std::max_align_t) Block {
  Block* previous;
  Block* next;
  std::size_t bytes;
  const char* file;
  int line;
};

constinit Block head = {&head, &head, 0, nullptr, 0};  // of a ring of all blocks
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

// What one place in the source has allocated.
struct Place {
  const char* file;
  int line;
  MaOutstanding outstanding;
};

// The blocks as places of one block each. Null when there is no memory for them.
std::unique_ptr<Place[]> listBlocks(std::size_t& count) {
  const std::scoped_lock lock(trackMutex);
  count = outstanding.blocks;
  std::unique_ptr<Place[]> places(new (std::nothrow) Place[count]);
  Place* place = places.get();
  if (place == nullptr) return places;
  for (const Block* block = head.next; block != &head; block = block->next)
    *place++ = {block->file, block->line, {1, block->bytes}};
  return places;
}

bool isBefore(const Place& a, const Place& b) {
  const int files = std::strcmp(a.file, b.file);
  return files != 0 ? files < 0 : a.line < b.line;
}

void reportPlace(const Place* first, const Place* last) {
  MaOutstanding sum = {};
  for (const Place* place = first; place != last; ++place) {
    sum.blocks += place->outstanding.blocks;
    sum.bytes += place->outstanding.bytes;
  }
  rptError("Not freed: %zu bytes in %zu blocks (file %s, line %d)\n", sum.bytes, sum.blocks,
           first->file, first->line);
}

// Reports at the end of the process, after all that uses this library has been destroyed; the
// host's sinks are gone as well. A forked child has its parent's blocks, not leaks of its own.
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
  const std::unique_ptr<Place[]> places = listBlocks(count);
  if (!places) {
    rptError("Not freed: %zu blocks\n", count);
    return;
  }
  const Place* end = places.get() + count;
  std::sort(places.get(), places.get() + count, isBefore);
  for (const Place* first = places.get(); first != end;) {
    const Place* last = std::upper_bound(first, end, *first, isBefore);
    reportPlace(first, last);
    first = last;
  }
}
