#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <vx/Filename.h>
#include <vx/MoveableStore.h>
#include <vx/Uuid.h>
#include <vx/detail/FreeSpace.h>
#include <vx/detail/paths.h>
#include <vx/os/BackingFile.h>

namespace vxOS {

namespace {

using vxString::CString;

constexpr std::uint64_t kAlignment = 64;  // a line of the cache
constexpr std::size_t kMostBytes = SIZE_MAX / 4;

constexpr std::uint64_t roundUp(std::uint64_t bytes, std::uint64_t unit) {
  return (bytes + unit - 1) / unit * unit;
}

// Every block has an address of its own, also an empty one.
std::uint64_t roomFor(std::size_t bytes) {
  return std::max(roundUp(bytes, kAlignment), kAlignment);
}

bool isStartOfName(std::string_view text) {
  return text.find_first_of(std::string_view("/\\:\0", 4)) == std::string_view::npos;
}

// A mapped part of the file.
class View {
 public:
  View() = default;
  View(const BackingFile& file, std::uint64_t offset, std::uint64_t length)
      : skipped_(offset % BackingFile::kGranularity),
        length_(length + skipped_),
        start_(static_cast<std::byte*>(file.map(offset - skipped_, length_))) {}
  View(View&& other) noexcept { *this = std::move(other); }
  View& operator=(View&& other) noexcept {
    std::swap(skipped_, other.skipped_);
    std::swap(length_, other.length_);
    std::swap(start_, other.start_);
    return *this;
  }
  ~View() {
    if (start_ != nullptr) BackingFile::unmap(start_, length_);
  }

  // Null when the part could not be mapped.
  std::byte* data() const { return start_ != nullptr ? start_ + skipped_ : nullptr; }

 private:
  std::size_t skipped_ = 0;  // from the start of the mapping to the part
  std::size_t length_ = 0;
  std::byte* start_ = nullptr;
};

struct Block {
  std::uint64_t offset;
  std::uint64_t room;
  std::size_t bytes;
  int locks = 0;
  View view = {};  // while there are locks
};

}  // namespace

// The rooms of the blocks and the free space make up the file.
class MoveableMemory::Store {
 public:
  bool create(const CString& path) { return file_.create(path); }
  // Null when there is no such block, and when there is no store.
  static Block* find(Store* store, Handle handle);
  Handle allocate(std::size_t bytes);
  bool resize(Block& block, std::size_t bytes);
  void free(Handle handle);
  void* lock(Block& block) const;
  void unlock(Block& block);
  void compact();
  std::uint64_t fileSize() const { return file_.size(); }

 private:
  std::optional<std::uint64_t> takeRoom(std::uint64_t room);
  bool grow(std::uint64_t room);
  bool move(Block& block, std::uint64_t room);
  void trim(Block& block);
  std::uint64_t slide();
  void slide(Block& block, std::uint64_t offset) const;
  void giveTail(std::uint64_t offset);

  BackingFile file_;
  detail::FreeSpace free_;
  std::unordered_map<Handle, Block> blocks_;  // views go before the file
  Handle lastHandle_ = 0;
};

Block* MoveableMemory::Store::find(Store* store, Handle handle) {
  if (store == nullptr) return nullptr;
  const auto found = store->blocks_.find(handle);
  return found != store->blocks_.end() ? &found->second : nullptr;
}

MoveableMemory::Handle MoveableMemory::Store::allocate(std::size_t bytes) {
  const std::uint64_t room = roomFor(bytes);
  const std::optional<std::uint64_t> offset = takeRoom(room);
  if (!offset) return 0;
  try {
    blocks_.emplace(lastHandle_ + 1, Block{*offset, room, bytes});
  } catch (const std::bad_alloc&) {
    free_.give(*offset, room);
    return 0;
  }
  return ++lastHandle_;
}

bool MoveableMemory::Store::resize(Block& block, std::size_t bytes) {
  const std::uint64_t room = roomFor(bytes);
  if (room > block.room && (block.locks > 0 || !move(block, room))) return false;
  block.bytes = bytes;
  if (block.locks == 0) trim(block);
  return true;
}

void MoveableMemory::Store::free(Handle handle) {
  if (const auto block = blocks_.extract(handle))
    free_.give(block.mapped().offset, block.mapped().room);
}

void* MoveableMemory::Store::lock(Block& block) const {
  if (block.locks == 0) block.view = View(file_, block.offset, block.room);
  if (block.view.data() != nullptr) ++block.locks;
  return block.view.data();
}

void MoveableMemory::Store::unlock(Block& block) {
  if (block.locks == 0 || --block.locks > 0) return;
  block.view = {};
  trim(block);
}

void MoveableMemory::Store::compact() {
  const std::uint64_t end = slide();
  file_.resize(roundUp(end, BackingFile::kGranularity));
  giveTail(end);
}

// Blocks are slid together when the disk is full.
std::optional<std::uint64_t> MoveableMemory::Store::takeRoom(std::uint64_t room) {
  std::optional<std::uint64_t> offset = free_.take(room);
  if (!offset && grow(room)) offset = free_.take(room);
  if (!offset && free_.total() >= room) {
    giveTail(slide());
    offset = free_.take(room);
  }
  return offset;
}

bool MoveableMemory::Store::grow(std::uint64_t room) {
  const std::uint64_t end = file_.size();
  const std::uint64_t missing = room - std::min(room, free_.endingAt(end));
  if (!file_.resize(roundUp(end + missing, BackingFile::kGranularity))) return false;
  giveTail(end);
  return true;
}

bool MoveableMemory::Store::move(Block& block, std::uint64_t room) {
  const std::optional<std::uint64_t> offset = takeRoom(room);
  if (!offset) return false;
  const View from(file_, block.offset, block.room);
  const View to(file_, *offset, room);
  const bool isMapped = from.data() != nullptr && to.data() != nullptr;
  if (isMapped) {
    std::memcpy(to.data(), from.data(), block.bytes);
    std::swap(block.room, room);
  }
  free_.give(isMapped ? std::exchange(block.offset, *offset) : *offset, room);
  return isMapped;
}

// Frees the room that the block does not need.
void MoveableMemory::Store::trim(Block& block) {
  const std::uint64_t room = roomFor(block.bytes);
  if (room < block.room) free_.give(block.offset + room, block.room - room);
  block.room = room;
}

// Slides the blocks to the front, but for those that are locked. Returns the end of the last block.
std::uint64_t MoveableMemory::Store::slide() {
  std::vector<Block*> order;
  order.reserve(blocks_.size());
  for (auto& [handle, block] : blocks_) order.push_back(&block);
  std::sort(order.begin(), order.end(),
            [](const Block* a, const Block* b) { return a->offset < b->offset; });
  free_.clear();
  std::uint64_t end = 0;
  for (Block* block : order) {
    if (block->locks == 0 && block->offset > end) slide(*block, end);
    if (block->offset > end) free_.give(end, block->offset - end);
    end = block->offset + block->room;
  }
  return end;
}

// Without address space the block stays where it is.
void MoveableMemory::Store::slide(Block& block, std::uint64_t offset) const {
  const std::uint64_t distance = block.offset - offset;
  const View view(file_, offset, distance + block.room);
  if (view.data() == nullptr) return;
  std::memmove(view.data(), view.data() + distance, block.bytes);
  block.offset = offset;
}

void MoveableMemory::Store::giveTail(std::uint64_t offset) {
  if (offset < file_.size()) free_.give(offset, file_.size() - offset);
}

MoveableMemory::MoveableMemory() = default;
MoveableMemory::~MoveableMemory() = default;

bool MoveableMemory::initializeFiles(const vxString::IString& directory,
                                     const vxString::IString& prefix) {
  if (store_ != nullptr) return false;
  try {
    const CString folder = directory.asMultibyte();
    const CString start = prefix.asMultibyte();
    if (detail::holdsZero(folder.view()) || !isStartOfName(start.view())) return false;
    auto store = std::make_unique<Store>();
    if (!store->create(Filename::join(folder, start + Uuid::generate().asString()))) return false;
    store_ = std::move(store);
    return true;
  } catch (const std::exception&) {  // no memory or no random numbers
    return false;
  }
}

MoveableMemory::Handle MoveableMemory::allocate(std::size_t bytes) {
  if (store_ == nullptr || bytes > kMostBytes) return 0;
  try {
    return store_->allocate(bytes);
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

bool MoveableMemory::resize(Handle block, std::size_t bytes) {
  Block* const found = Store::find(store_.get(), block);
  if (found == nullptr || bytes > kMostBytes) return false;
  try {
    return store_->resize(*found, bytes);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

void MoveableMemory::free(Handle block) {
  if (store_ != nullptr) store_->free(block);
}

std::size_t MoveableMemory::size(Handle block) const {
  const Block* const found = Store::find(store_.get(), block);
  return found != nullptr ? found->bytes : 0;
}

void* MoveableMemory::lock(Handle block) {
  Block* const found = Store::find(store_.get(), block);
  return found != nullptr ? store_->lock(*found) : nullptr;
}

void MoveableMemory::unlock(Handle block) {
  Block* const found = Store::find(store_.get(), block);
  if (found != nullptr) store_->unlock(*found);
}

bool MoveableMemory::compact() {
  if (store_ == nullptr) return false;
  try {
    store_->compact();
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

std::uint64_t MoveableMemory::fileSize() const {
  return store_ != nullptr ? store_->fileSize() : 0;
}

}  // namespace vxOS
