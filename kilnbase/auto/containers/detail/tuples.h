// What the containers over numeric vectors share.
#pragma once

#include <optional>

#include <kilnbase/linalg/DoubleVec.h>

namespace vxKilnBase::detail {

/// The number of doubles in rows * cols tuples, none when one of the arguments is below 1. When no
/// int holds it, raises the error of storage that cannot be had (kOutOfMemoryError) and returns
/// nothing.
std::optional<unsigned> tupleElements(int size, int rows, int cols = 1);

/// Whether the view of `v` was moved away, so that an object that consists of `v` takes over what
/// is assigned.
bool isMovedFrom(const DoubleVec& v);

/// Reports a failed bounds check and ends the process. `file` and `line` are part of the interface:
/// the names under which users know these failures.
[[noreturn]] void failBoundsCheck(const char* reason, int index, const char* file, int line);

}  // namespace vxKilnBase::detail
