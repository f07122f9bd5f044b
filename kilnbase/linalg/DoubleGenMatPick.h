// Sub-matrices of DoubleGenMats picked by row and column indices.
#pragma once

#include <kilnbase/linalg/GenMatPick.h>

/// The sub-matrix of a DoubleGenMat at given rows and columns; see vxKilnBase::GenMatPick.
using DoubleGenMatPick = vxKilnBase::GenMatPick<double>;
