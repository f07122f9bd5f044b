// Numbers of rows, columns and elements.
#pragma once

#include <cstdint>

#include <kilnbase/linalg/detail/errors.h>

namespace vxKilnBase::detail {

inline int asInt(unsigned n) {
  return static_cast<int>(n);
}

/// The number of elements of an m by n matrix. More than 2^32 - 1 elements raise 0x3008 and count
/// as none.
inline unsigned elementCount(unsigned m, unsigned n) {
  const std::uint64_t count = std::uint64_t{m} * n;
  if (count <= UINT32_MAX) return static_cast<unsigned>(count);
  raiseOutOfMemory(kBlockSource);
  return 0;
}

}  // namespace vxKilnBase::detail
