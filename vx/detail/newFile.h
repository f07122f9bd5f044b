// Files under names that nobody can foretell.
#pragma once

#include <cstddef>
#include <functional>

#include <vx/String.h>

namespace vxOS::detail {

/// Makes a file under a path that begins with `stem` and goes on with `count` random letters and
/// digits. `make` makes the file unless it exists, and returns the number of the system's error;
/// another name is tried when that is "exists". Returns the path; empty when `make` fails. Throws
/// std::system_error when the system has no random numbers. `count` is at most 256.
vxString::CString makeNewFile(const vxString::CString& stem, std::size_t count,
                              const std::function<int(const vxString::CString& path)>& make);

}  // namespace vxOS::detail
