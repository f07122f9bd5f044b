// Dense matrices of 32-bit int.
#pragma once

#include <kilnbase/linalg/IntVec.h>
#include <kilnbase/linalg/detail/GenMat.h>
#include <kilnbase/linalg/detail/GenMatPick.h>

/// A dense column-major matrix of 32-bit int; see vxKilnBase::GenMat.
using IntGenMat = vxKilnBase::GenMat<int>;
