// Elements of SCharVecs picked by index.
#pragma once

#include <kilnbase/linalg/VecPick.h>

/// The elements of a SCharVec at given indices; see vxKilnBase::VecPick.
using SCharVecPick = vxKilnBase::VecPick<signed char>;
