// Vectors of 32-bit int.
#pragma once

#include <kilnbase/linalg/Vec.h>
#include <kilnbase/linalg/VecPick.h>

/// A vector of 32-bit int: a strided view onto counted storage; see vxKilnBase::Vec.
using IntVec = vxKilnBase::Vec<int>;
