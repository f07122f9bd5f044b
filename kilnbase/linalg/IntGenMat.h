// Dense matrices of 32-bit int.
#pragma once

#include <kilnbase/linalg/GenMat.h>
#include <kilnbase/linalg/GenMatPick.h>
#include <kilnbase/linalg/IntVec.h>
#include <kilnbase/linalg/Products.h>

/// A dense column-major matrix of 32-bit int; see vxKilnBase::GenMat.
using IntGenMat = vxKilnBase::GenMat<int>;
