// Dense matrices of double.
#pragma once

#include <kilnbase/linalg/DoubleVec.h>
#include <kilnbase/linalg/GenMat.h>
#include <kilnbase/linalg/GenMatPick.h>
#include <kilnbase/linalg/Products.h>

/// A dense column-major matrix of double; see vxKilnBase::GenMat.
using DoubleGenMat = vxKilnBase::GenMat<double>;
