// The generator of random numbers of each operating system.
#pragma once

#include <cstdint>
#include <span>

namespace vxOS::random {

/// Fills `bytes` with random numbers that nobody can foretell. At most 256 bytes. Throws
/// std::system_error when the system refuses.
void fill(std::span<std::uint8_t> bytes);

}  // namespace vxOS::random
