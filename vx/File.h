// Files.
#pragma once

#include <cstdio>

#include <vx/String.h>

namespace vxOS {

/// `fopen` for a path of the application: UTF-8 on every system, with `\` or `/` between the names.
/// Null when the file cannot be opened.
VX_API std::FILE* openFile(const vxString::CString& path, const char* mode);

}  // namespace vxOS
