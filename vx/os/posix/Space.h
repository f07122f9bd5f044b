// The space that a file takes on the disk.
#pragma once

#include <cstdint>

namespace vxOS {

/// Makes a file longer by `length` zero bytes and takes their space on the disk now. `end` is the
/// length of the file so far. Returns the number of the system's error, also when the limit of the
/// process is passed (no signal). After an error the file may be longer by a part.
int takeSpace(int file, std::uint64_t end, std::uint64_t length);

}  // namespace vxOS
