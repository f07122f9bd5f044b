// Packed symmetric matrices of double.
#pragma once

#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/PackedMat.h>

/// A symmetric matrix of double that stores one triangle; see vxKilnBase::PackedMat.
using DoubleSymMat = vxKilnBase::PackedMat<vxKilnBase::SymmetricPacking>;
