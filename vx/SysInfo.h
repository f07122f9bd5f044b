// Facts about the system and this application.
#pragma once

#include <vx/String.h>

/// The path of the program `name` in the folder of the application's programs. On Windows ".exe" is
/// added when the name does not end so. Whether there is such a program is not checked. Empty when
/// the folder is not known.
VX_API vxString::CString APP_getBinaryPath(const vxString::CString& name);

/// Sets the folder of the application's programs. At the start, and again after "", that is the
/// folder of the program that this process runs. For the application's main thread.
VX_API void APP_setBinaryFolder(const vxString::CString& folder);
