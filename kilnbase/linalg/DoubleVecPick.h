// Elements of DoubleVecs picked by index.
#pragma once

#include <kilnbase/linalg/VecPick.h>

/// The elements of a DoubleVec at given indices; see vxKilnBase::VecPick.
using DoubleVecPick = vxKilnBase::VecPick<double>;
