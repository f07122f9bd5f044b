// Files.
#pragma once

#include <cstdio>
#include <string_view>

#include <vx/export.h>

namespace vxOS {

/// `fopen` for a path of the application: UTF-8 on every system, with `\` or `/` between the names,
/// of any length that the system accepts. Null when the file cannot be opened, when the path holds
/// a zero byte, and when there is no memory.
VX_API std::FILE* openFile(std::string_view path, const char* mode) noexcept;

}  // namespace vxOS
