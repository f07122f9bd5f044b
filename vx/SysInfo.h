// What the system tells about itself and about this application.
#pragma once

#include <vx/String.h>

/// The path of the program `name` in the folder of the application's programs, on Windows with
/// ".exe" when the name lacks it. Whether there is such a program is not looked at. Empty when the
/// folder is not known.
VX_API vxString::CString APP_getBinaryPath(const vxString::CString& name);

/// Names the folder of the application's programs, for a host that keeps them elsewhere. At the
/// start, and again with "", it is the folder of the program that this process runs. For the
/// application's main thread.
VX_API void APP_setBinaryFolder(const vxString::CString& folder);
