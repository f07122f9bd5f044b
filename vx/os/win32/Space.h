// The space that a file takes on the disk.
#pragma once

#include <cstdint>
#include <string>
#include <windows.h>

namespace vxOS {

/// Makes a file for this user alone that is not compressed, also in a folder whose new files are.
/// INVALID_HANDLE_VALUE when that fails or there is something under `path`.
HANDLE makeUncompressed(const std::wstring& path, DWORD sharing, DWORD flags);

/// Makes a file longer or shorter. A file that is not compressed takes the space on the disk now.
bool takeSpace(HANDLE file, std::uint64_t size);

}  // namespace vxOS
