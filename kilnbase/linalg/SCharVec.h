// Vectors of signed char.
#pragma once

#include <kilnbase/linalg/detail/Vec.h>
#include <kilnbase/linalg/detail/VecPick.h>

/// A vector of signed char: a strided view onto counted storage; see vxKilnBase::Vec.
using SCharVec = vxKilnBase::Vec<signed char>;
