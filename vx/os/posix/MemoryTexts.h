// The texts in which Linux tells about memory.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include <vx/SysInfo.h>

namespace vxOS::sysInfo {

/// Returns the content of a file; nothing when the file cannot be read.
using ReadFile = std::function<std::optional<std::string>(const std::string& path)>;

/// How much address space a process may have and has, in kilobytes.
struct AddressSpace {
  std::uint64_t limit = UINT64_MAX;
  std::uint64_t used = 0;
};

/// The memory of the machine (proc_meminfo(5)), bounded by the control groups of the process and
/// all groups around these (the kernel's cgroup-v1/memory and cgroup-v2 documents), and by the
/// limit of the address space. A text or a number that cannot be read bounds nothing. Cached files
/// that the kernel may drop at any time count as available.
MemoryFigures memoryFromTexts(const ReadFile& read, AddressSpace addressSpace);

}  // namespace vxOS::sysInfo
