// Packed upper triangular matrices of double.
#pragma once

#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/PackedMat.h>

/// An upper triangular matrix of double that stores one triangle; see vxKilnBase::PackedMat.
using DoubleUpperTriMat = vxKilnBase::PackedMat<vxKilnBase::UpperPacking>;
