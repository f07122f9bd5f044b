// Sub-matrices of IntGenMats picked by row and column indices.
#pragma once

#include <kilnbase/linalg/GenMatPick.h>

/// The sub-matrix of a IntGenMat at given rows and columns; see vxKilnBase::GenMatPick.
using IntGenMatPick = vxKilnBase::GenMatPick<int>;
