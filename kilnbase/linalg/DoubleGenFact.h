// LU factorization of square matrices.
#pragma once

#include <kilnbase/linalg/Fact.h>

/// P A = L U with partial pivoting, for any square matrix; see vxKilnBase::Fact.
using DoubleGenFact = vxKilnBase::Fact<DoubleGenMat>;
