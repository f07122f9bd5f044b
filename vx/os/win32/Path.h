// The path of a file in the form for system functions.
#pragma once

#include <string>

#include <vx/String.h>

namespace vxOS {

/// The complete path; empty when the system refuses the path.
std::wstring systemPath(const vxString::CString& path);

}  // namespace vxOS
