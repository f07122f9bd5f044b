// Facts about the machine, on each operating system.
#pragma once

#include <cstddef>

#include <vx/SysInfo.h>

namespace vxOS::sysInfo {

/// In bytes.
std::size_t pageSize();

/// Zeros for what the system does not tell.
MemoryFigures memory();

}  // namespace vxOS::sysInfo
