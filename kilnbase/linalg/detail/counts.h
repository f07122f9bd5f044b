// Numbers of rows, columns and elements.
#pragma once

#include <cstdint>

#include <kilnbase/linalg/detail/errors.h>

namespace vxKilnBase::detail {

inline int asInt(unsigned n) {
  return static_cast<int>(n);
}

/// `count` as the number of elements of a vector. More than 2^32 - 1 elements raise
/// kOutOfMemoryError and count as none.
inline unsigned elementCount(std::uint64_t count) {
  if (count <= UINT32_MAX) return static_cast<unsigned>(count);
  raiseOutOfMemory(kBlockSource);
  return 0;
}

/// The number of elements of an m by n matrix, in the same way.
inline unsigned elementCount(unsigned m, unsigned n) {
  return elementCount(std::uint64_t{m} * n);
}

}  // namespace vxKilnBase::detail
