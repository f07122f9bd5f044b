// Dense matrices of double.
#pragma once

#include <kilnbase/linalg/DoubleVec.h>
#include <kilnbase/linalg/detail/GenMat.h>
#include <kilnbase/linalg/detail/GenMatPick.h>

/// A dense column-major matrix of double; see vxKilnBase::GenMat.
using DoubleGenMat = vxKilnBase::GenMat<double>;
