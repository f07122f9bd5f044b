#include <cstring>
#include <exception>
#include <functional>
#include <iterator>
#include <map>
#include <mutex>
#include <new>
#include <string_view>
#include <utility>

#include <vx/MappedFile.h>
#include <vx/detail/newFile.h>
#include <vx/detail/paths.h>
#include <vx/os/Console.h>
#include <vx/os/File.h>
#include <vx/os/Mapping.h>

namespace vxOS {

using vxString::CString;

namespace {

// The smallest page of the supported processors; mappings have whole pages.
constexpr std::size_t kPageSize = 4096;

bool isPossible(std::size_t bytes) {
  return bytes > 0 && bytes <= PTRDIFF_MAX - kPageSize;
}

struct Block {
  std::size_t length = 0;  // with the rest of the last page
  CString file;            // that outlives the mapping; may be empty
  long process = console::processId();
};

using BlockMap = std::map<const char*, Block>;  // by the first byte

// What `mapMemory` and `mapTemporaryFile` mapped.
struct Blocks {
  std::mutex mutex;
  BlockMap mapped;
};

// Never destroyed, because blocks may be unmapped while the process ends.
Blocks& blocks() {
  static Blocks& all = *new Blocks;
  return all;
}

// Deletes the files of the blocks that are still mapped when the library is unloaded. A forked
// child leaves the files of its parent alone.
class Leftovers {
 public:
  ~Leftovers() {
    for (const auto& [start, block] : blocks().mapped)
      if (!block.file.isEmpty() && block.process == console::processId()) file::remove(block.file);
  }
};
const Leftovers kLeftovers;

// The entry of a block that is not mapped yet. Nothing can run out of memory after the mapping, as
// all memory is taken here.
BlockMap::node_type prepareEntry(std::size_t bytes, const CString& file) {
  blocks();
  BlockMap one;
  one.emplace(nullptr,
              Block{.length = (bytes + kPageSize - 1) / kPageSize * kPageSize, .file = file});
  return one.extract(one.begin());
}

void* remember(void* start, BlockMap::node_type entry) {
  if (start == nullptr) return nullptr;
  entry.key() = static_cast<const char*>(start);
  const std::lock_guard lock(blocks().mutex);
  blocks().mapped.insert(std::move(entry));
  return start;
}

// The entry of the block that holds a byte, taken out; empty when there is none.
BlockMap::node_type forget(const char* inside) {
  const std::lock_guard lock(blocks().mutex);
  BlockMap& mapped = blocks().mapped;
  const auto after = mapped.upper_bound(inside);
  if (after == mapped.begin()) return {};
  const auto found = std::prev(after);
  const char* end = found->first + found->second.length;
  return std::less<>()(inside, end) ? mapped.extract(found) : BlockMap::node_type();
}

// The path replaces `stem` and what follows.
void* mapNewFile(std::string_view stem, char* ending, std::size_t count, std::size_t bytes) {
  void* start = nullptr;
  BlockMap::node_type entry;
  const CString path = detail::makeNewFile(CString(stem), count, [&](const CString& tried) {
    entry = prepareEntry(bytes, mapping::kTemporaryFileStays ? tried : CString());
    const auto [mapped, error] = mapping::mapTemporaryFile(tried, bytes);
    start = mapped;
    return start != nullptr ? 0 : error;
  });
  if (start != nullptr) std::memcpy(ending, path.c_str() + stem.size(), count);
  return remember(start, std::move(entry));
}

}  // namespace

bool MemoryMappedFile::createFile(const CString& path, std::size_t size, int access) {
  close();
  if (!isPossible(size) || detail::holdsZero(path.view())) return false;
  file_ = mapping::createFile(path, size);
  if (!isOpen()) return false;
  size_ = size;
  access_ = access;
  return true;
}

void MemoryMappedFile::close() {
  if (isOpen()) mapping::closeFile(file_);
  file_ = kNone;
  size_ = 0;
}

std::size_t FileMapping::getGranularity() {
  return 65536;
}

void* FileMapping::map(const MemoryMappedFile& file, std::uint64_t offset, std::size_t length) {
  unmap();
  const bool isInFile = offset <= file.size() && length <= file.size() - offset;
  if (!isInFile || length == 0 || offset % getGranularity() != 0) return nullptr;
  const bool isWritable = file.access_ != MemoryMappedFile::kReadOnly;
  data_ = mapping::mapFile(file.file_, isWritable, offset, length);
  if (data_ == nullptr) return nullptr;
  offset_ = offset;
  length_ = length;
  return data_;
}

void FileMapping::unmap() {
  if (data_ != nullptr) mapping::unmap(data_, length_);
  data_ = nullptr;
  offset_ = 0;
  length_ = 0;
}

void* mapMemory(std::size_t bytes) {
  if (!isPossible(bytes)) return nullptr;
  try {
    BlockMap::node_type entry = prepareEntry(bytes, {});
    return remember(mapping::mapMemory(bytes), std::move(entry));
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void* mapTemporaryFile(char* name, std::size_t bytes) {
  constexpr std::string_view kPattern = "XXXXXX";
  const std::string_view path = name;
  if (!isPossible(bytes) || !path.ends_with(kPattern)) return nullptr;
  const std::size_t stem = path.size() - kPattern.size();
  try {
    return mapNewFile(path.substr(0, stem), name + stem, kPattern.size(), bytes);
  } catch (const std::exception&) {  // no memory or no random numbers
    return nullptr;
  }
}

bool unmapMemory(const void* inside) {
  const BlockMap::node_type entry = forget(static_cast<const char*>(inside));
  if (entry.empty()) return false;
  mapping::unmap(const_cast<char*>(entry.key()), entry.mapped().length);
  return true;
}

}  // namespace vxOS
