// Factorization of packed symmetric matrices.
#pragma once

#include <kilnbase/linalg/Fact.h>

/// A = U D Uᵀ with diagonal pivoting, for packed symmetric matrices; see vxKilnBase::Fact.
using DoubleSymFact = vxKilnBase::Fact<DoubleSymMat>;
