// Numbers of rows, columns and elements.
#pragma once

#include <cstdint>

#include <kilnbase/linalg/detail/errors.h>

namespace vxKilnBase::detail {

inline int asInt(unsigned n) {
  return static_cast<int>(n);
}

/// The number of elements of storage for so many. More than 2^32 - 1 raise 0x3008 and count as
/// none.
inline unsigned elementCount(std::uint64_t count) {
  if (count <= UINT32_MAX) return static_cast<unsigned>(count);
  raiseOutOfMemory(kBlockSource);
  return 0;
}

/// The same for an m by n matrix.
inline unsigned elementCount(unsigned m, unsigned n) {
  return elementCount(std::uint64_t{m} * n);
}

}  // namespace vxKilnBase::detail
