// Files, on each operating system.
#pragma once

#include <cstdio>

#include <vx/String.h>

namespace vxOS::file {

/// Opens a file as `fopen` does; the path holds no zero.
std::FILE* open(const vxString::CString& path, const char* mode);

}  // namespace vxOS::file
