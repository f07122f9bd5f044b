#include <cstddef>
#include <cstdio>
#include <new>
#include <optional>

#include <kilnbase/memory/ma_memory_manager.h>
#include <vx/File.h>
#include <vx/Filename.h>
#include <vx/MappedFile.h>
#include <vx/Memory.h>
#include <vx/SysInfo.h>

namespace {

constexpr std::uint32_t kMagic = 0xBEEF;
constexpr std::uint32_t kReserve = 5U << 20U;  // stays free in memory and on the disk
constexpr std::size_t kNameBytes = 260;
constexpr int kFileNumber = 0;  // in the names of temporary files

// Stands at the start of the mapping, the block after it.
struct Header {
  std::uint32_t magic = kMagic;
  std::uint32_t reserved0 = 0;
  char* name = nullptr;     // of the file, from MA_malloc; null in the paging file
  std::uint32_t total = 0;  // bytes, with the header
  std::uint32_t reserved1 = 0;
};
static_assert(offsetof(Header, name) == 8 && offsetof(Header, total) == 16);
static_assert(sizeof(Header) == 24);

constexpr std::uint32_t kOverhead = sizeof(Header);

// The result of the work; nothing (0, null, false) when the work runs out of memory.
template <class Work>
auto withMemory(Work work) -> decltype(work()) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return {};
  }
}

std::uint32_t bytes(std::uint64_t kilobytes) {
  return static_cast<std::uint32_t>(kilobytes) << 10U;
}

std::optional<std::uint64_t> freeKilobytesOnDisk() {
  return withMemory([]() -> std::optional<std::uint64_t> {
    vxOS::FilesystemStatus status;
    const bool isKnown = vxOS::Filesystem::stat(vxOS::temporaryDirectory(), status);
    return isKnown ? std::optional(status.freeKilobytes) : std::nullopt;
  });
}

void set(std::uint32_t* target, std::uint32_t value) {
  if (target != nullptr) *target = value;
}

char* newFileName() {
  char* name = static_cast<char*>(MA_malloc(kNameBytes, __LINE__, __FILE__));
  if (name == nullptr) return nullptr;
  const vxString::CString folder =
      withMemory([] { return std::optional(vxOS::temporaryDirectory()); }).value_or("");
  const int length = std::snprintf(name, kNameBytes, "%s%cMagic%dXXXXXX", folder.c_str(),
                                   vxOS::Filename::separator(), kFileNumber);
  if (!folder.isEmpty() && length > 0 && static_cast<std::size_t>(length) < kNameBytes) return name;
  MA_free(name);
  return nullptr;
}

// Returns the block after the header.
void* writeHeader(void* mapping, char* name, std::uint32_t total) {
  auto* header = new (mapping) Header;
  header->name = name;
  header->total = total;
  return header + 1;
}

void* allocateInPagingFile(std::uint32_t total) {
  void* mapping = vxOS::mapMemory(total);
  return mapping != nullptr ? writeHeader(mapping, nullptr, total) : nullptr;
}

void* allocateInFile(std::uint32_t total) {
  char* name = newFileName();
  if (name == nullptr) return nullptr;
  if (void* mapping = vxOS::mapTemporaryFile(name, total)) return writeHeader(mapping, name, total);
  MA_free(name);
  return nullptr;
}

// Null when there is no block.
Header* header(void* block) {
  if (block == nullptr) return nullptr;
  Header* found = static_cast<Header*>(block) - 1;
  return found->magic == kMagic ? found : nullptr;
}

}  // namespace

uint32_t MA_get_real_memory_size() {
  return bytes(vxOS::SysInfo::getMemory().totalPhysical);
}

uint32_t Ma_findPhysicalMemory() {
  return MA_get_real_memory_size();
}

uint32_t Ma_findAvailableMemory() {
  return bytes(vxOS::SysInfo::getMemory().availablePhysical);
}

uint32_t Ma_findFreePhysicalMemory() {
  return Ma_findAvailableMemory();
}

uint32_t MA_get_total_swap() {
  return bytes(vxOS::SysInfo::getMemory().totalVirtual);
}

uint32_t Ma_findVirtualMemory() {
  return MA_get_total_swap();
}

uint32_t MA_swap_available() {
  return bytes(vxOS::SysInfo::getMemory().availableVirtual);
}

uint32_t Ma_findFreeVirtualMemory() {
  const std::uint32_t available = MA_swap_available();
  return available > kReserve ? available - kReserve : 0;
}

uint32_t Ma_findMmapMemory() {
  constexpr std::uint64_t kReserveKilobytes = kReserve / 1024;
  const std::uint64_t kilobytes = freeKilobytesOnDisk().value_or(0);
  return kilobytes >= kReserveKilobytes ? bytes(kilobytes - kReserveKilobytes) : 0;
}

void Ma_get_process_data_limits(uint32_t* soft_limit, uint32_t* soft_usable, uint32_t* limit,
                                uint32_t* usable, uint32_t* in_use, uint32_t* address_room,
                                uint32_t* virtual_available, uint32_t* disk_free) {
  constexpr std::uint32_t kInUse = 0;
  set(soft_limit, 0);
  set(soft_usable, 0);
  set(limit, 0);
  set(usable, 0);
  set(in_use, kInUse);
  set(address_room, 0x7FFFFFFE - kInUse);
  if (virtual_available != nullptr) *virtual_available = MA_swap_available();
  if (disk_free != nullptr) *disk_free = bytes(freeKilobytesOnDisk().value_or(0));
}

uint32_t Ma_get_mmap_overhead() {
  return kOverhead;
}

bool Ma_checkMmapMemory(uint32_t size, uint32_t extra, int paged) {
  const std::uint32_t total = size + kOverhead;
  std::uint32_t memory = 0;
  std::uint32_t disk = 0;
  Ma_get_process_data_limits(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                             paged != 0 ? &memory : nullptr, paged != 0 ? nullptr : &disk);
  if (paged != 0) return memory >= total + extra;
  return total <= disk && total + extra <= Ma_findMmapMemory();
}

void* Ma_allocMmapMemory(uint32_t size, uint32_t extra, int paged) {
  const std::uint32_t total = size + kOverhead;
  const bool hasWrapped = total < size;
  if (hasWrapped || !Ma_checkMmapMemory(size, extra, paged)) return nullptr;
  return paged != 0 ? allocateInPagingFile(total) : allocateInFile(total);
}

uint32_t Ma_shrinkMmapMemory(void* p, uint32_t new_size) {
  Header* const block = header(p);
  if (block == nullptr) return 0;
  const std::uint64_t page = vxOS::SysInfo::getPageSize();
  const auto start = reinterpret_cast<std::uintptr_t>(block);
  const std::uint64_t end = (start + kOverhead + new_size + page - 1) / page * page;
  if (end - start < block->total) block->total = static_cast<std::uint32_t>(end - start);
  return block->total - kOverhead;
}

void Ma_freeMmapMemory(void* p) {
  Header* const block = header(p);
  if (block == nullptr) return;
  char* const name = block->name;
  vxOS::unmapMemory(p);
  if (name == nullptr) return;
  // On Windows the file has gone with the mapping.
  withMemory([name] { return vxOS::File::remove(name); });
  MA_free(name);
}
