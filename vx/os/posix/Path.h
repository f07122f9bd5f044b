// The path of a file in the form for system functions.
#pragma once

#include <vx/String.h>

namespace vxOS {

inline vxString::CString systemPath(const vxString::CString& path) {
  return path.replaced("\\", "/");
}

}  // namespace vxOS
