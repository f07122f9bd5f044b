// Files, on each operating system.
#pragma once

#include <cstdio>

#include <vx/String.h>

namespace vxOS::file {

/// Opens a file as `fopen` does. The path holds no zero byte.
std::FILE* open(const vxString::CString& path, const char* mode);

}  // namespace vxOS::file
