// Vectors of signed char.
#pragma once

#include <kilnbase/linalg/Vec.h>
#include <kilnbase/linalg/VecPick.h>

/// A vector of signed char: a strided view onto counted storage; see vxKilnBase::Vec.
using SCharVec = vxKilnBase::Vec<signed char>;
