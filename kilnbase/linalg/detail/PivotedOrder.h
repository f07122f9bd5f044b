// The order that pivoting gives to the columns of a matrix.
#pragma once

#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/IntVec.h>

namespace vxKilnBase::detail {

/// Where the n elements of a pivoted order stand originally.
///
/// An element without a pivot, or with a pivot outside 0..n-1, counts as not moved. Pivots that
/// belong to another matrix therefore give a wrong order, but no access outside n elements.
class PivotedOrder {
 public:
  /// Element i of the pivoted order is element pivots(i) of the original one.
  PivotedOrder(const IntVec& pivots, unsigned n) : places_(n) {
    for (int i = 0; i < static_cast<int>(places_.length()); ++i) {
      const int place = i < static_cast<int>(pivots.length()) ? pivots(i) : i;
      places_(i) = place >= 0 && static_cast<unsigned>(place) < n ? place : i;
    }
  }

  /// A new matrix with the n rows of `b` in pivoted order.
  DoubleGenMat permuteRows(const DoubleGenMat& b) const {
    DoubleGenMat result(places_.length(), b.cols());
    for (int j = 0; j < static_cast<int>(result.cols()); ++j) {
      for (int i = 0; i < static_cast<int>(result.rows()); ++i) result(i, j) = b(places_(i), j);
    }
    return result;
  }

  /// A new matrix of n rows: the first `count` rows of `x`, which stand in pivoted order, at their
  /// original places. All other rows are 0.
  DoubleGenMat unpermuteRows(const DoubleGenMat& x, unsigned count) const {
    DoubleGenMat result(places_.length(), x.cols(), 0.0);
    for (int j = 0; j < static_cast<int>(result.cols()); ++j) {
      for (int i = 0; i < static_cast<int>(count); ++i) result(places_(i), j) = x(i, j);
    }
    return result;
  }

  /// The same for vectors of n elements.
  DoubleVec permute(const DoubleVec& v) const { return permuteRows(columnOf(v)).dataVec(); }
  DoubleVec unpermute(const DoubleVec& v) const {
    return unpermuteRows(columnOf(v), v.length()).dataVec();
  }

 private:
  static DoubleGenMat columnOf(const DoubleVec& v) { return DoubleGenMat(v, v.length(), 1); }

  IntVec places_;
};

}  // namespace vxKilnBase::detail
