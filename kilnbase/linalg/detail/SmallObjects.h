// The allocator of block headers and other small records of the numeric library.
#pragma once

#include <cstddef>

namespace vxKilnBase::detail {

/// Takes `size` bytes, rounded up to an even number, aligned for any type; null when there is no
/// memory. Sizes up to 10 come from a cache of the last few blocks of that size that were released;
/// every other size comes straight from the heap.
void* takeSmallObject(std::size_t size) noexcept;

/// Gives back what `takeSmallObject(size)` returned.
void releaseSmallObject(void* object, std::size_t size) noexcept;

}  // namespace vxKilnBase::detail
