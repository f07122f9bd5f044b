// Packed lower triangular matrices of double.
#pragma once

#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/PackedMat.h>

/// A lower triangular matrix of double that stores one triangle; see vxKilnBase::PackedMat.
using DoubleLowerTriMat = vxKilnBase::PackedMat<vxKilnBase::LowerPacking>;
