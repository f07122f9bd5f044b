// What vx/Directory.h leaves to each operating system beside the members of its classes.
#pragma once

#include <vx/String.h>

namespace vxOS::directory {

/// Makes a folder for this user alone; its parent exists. The number of the system's error, 0 when
/// the folder is made or there was something of that name.
int makePrivate(const vxString::CString& path);

}  // namespace vxOS::directory
