// Elements of IntVecs picked by index.
#pragma once

#include <kilnbase/linalg/VecPick.h>

/// The elements of a IntVec at given indices; see vxKilnBase::VecPick.
using IntVecPick = vxKilnBase::VecPick<int>;
