// Cubic B-splines of one variable: knots, basis functions, refinement.
//
// The knots are clamped: the first and the last are repeated four times, so that the spline covers
// the interval between them and there are four fewer basis functions than knots.
#pragma once

#include <array>

#include <kilnbase/auto/containers/TnumberSequence.h>
#include <kilnbase/linalg/DoubleGenMat.h>

#include "examples/surface_fit/Points.h"

namespace surfacefit {

/// Degree plus one: the number of basis functions that are not 0 at a place.
inline constexpr int kOrder = 4;

/// The clamped knots of a spline of one span.
TnumberSequence oneSpan(const Range& range);

/// Where the spline is defined.
Range domain(const TnumberSequence& knots);

/// The number of basis functions, hence of coefficients.
int basisSize(const TnumberSequence& knots);

/// The number of spans between distinct knots.
int spanCount(const TnumberSequence& knots);

/// The basis functions that are not 0 at a place: `value[k]` is that of function `first + k`. They
/// sum to 1.
struct BasisValues {
  int first;
  std::array<double, kOrder> value;
};

/// The basis at t, which must lie in the domain. de Boor, A Practical Guide to Splines, chapter X
/// (algorithm BSPLVB).
BasisValues basisAt(const TnumberSequence& knots, double t);

/// The coefficients, one row of the result a basis function of the refined knots, of the splines
/// whose coefficients are the columns of `coefficients`, after a knot is inserted at t inside the
/// domain: the splines stay the same. Boehm, Inserting new knots into B-spline curves,
/// Computer-Aided Design 12 (1980).
DoubleGenMat insertKnot(const TnumberSequence& knots, const DoubleGenMat& coefficients, double t);

}  // namespace surfacefit
