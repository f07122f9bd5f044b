#include "examples/surface_fit/Spline.h"

#include <algorithm>

namespace surfacefit {

namespace {

// The knot at which the span of t begins; spans are closed on the left, the last one on both sides.
int spanAt(const TnumberSequence& knots, double t) {
  const bool atEnd = t >= domain(knots).high;
  return knots.findInterval(t, atEnd ? 1 : 0);
}

}  // namespace

TnumberSequence oneSpan(const Range& range) {
  TnumberSequence knots;
  knots.add(range.low, kOrder);
  knots.add(range.high, kOrder);
  return knots;
}

Range domain(const TnumberSequence& knots) {
  return {knots(0), knots(knots.length() - 1)};
}

int basisSize(const TnumberSequence& knots) {
  return knots.length() - kOrder;
}

int spanCount(const TnumberSequence& knots) {
  return static_cast<int>(knots.breakpoints().length()) - 1;
}

BasisValues basisAt(const TnumberSequence& knots, double t) {
  const int span = spanAt(knots, t);
  BasisValues basis{span - (kOrder - 1), {1.0}};
  for (int degree = 1; degree < kOrder; ++degree) {
    double carried = 0.0;
    for (int k = 0; k < degree; ++k) {
      const double right = knots(span + k + 1);
      const double left = knots(span + k + 1 - degree);
      const double term = basis.value[k] / (right - left);
      basis.value[k] = carried + (right - t) * term;
      carried = (t - left) * term;
    }
    basis.value[degree] = carried;
  }
  return basis;
}

DoubleGenMat insertKnot(const TnumberSequence& knots, const DoubleGenMat& coefficients, double t) {
  const int span = spanAt(knots, t);
  const int count = static_cast<int>(coefficients.rows());
  DoubleGenMat refined(coefficients.rows() + 1, coefficients.cols());
  for (int i = 0; i <= count; ++i) {
    // Before the span's functions the coefficients stay, after them they move up by one.
    double weight = i <= span - (kOrder - 1) ? 1.0 : 0.0;
    if (i > span - (kOrder - 1) && i <= span)
      weight = (t - knots(i)) / (knots(i + kOrder - 1) - knots(i));
    const DoubleVec own = coefficients.row(std::min(i, count - 1));
    const DoubleVec before = coefficients.row(std::max(i - 1, 0));
    refined.row(i) = own * weight + before * (1.0 - weight);
  }
  return refined;
}

}  // namespace surfacefit
