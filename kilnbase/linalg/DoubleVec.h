// Vectors of double.
#pragma once

#include <kilnbase/linalg/Vec.h>
#include <kilnbase/linalg/VecPick.h>

/// A vector of double: a strided view onto counted storage; see vxKilnBase::Vec.
using DoubleVec = vxKilnBase::Vec<double>;
