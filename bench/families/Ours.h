// The library's types from and to plain numbers.
#pragma once

#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/IntVec.h>

#include "Data.h"

namespace bench {

inline DoubleVec vectorOf(const Values& values) {
  return DoubleVec(values.data(), static_cast<unsigned>(values.size()));
}

inline DoubleGenMat matrixOf(const Values& values, const Shape& shape) {
  return DoubleGenMat(values.data(), static_cast<unsigned>(shape.rows),
                      static_cast<unsigned>(shape.columns));
}

inline Values valuesOf(double value) {
  return {value};
}

/// All elements; of a matrix, column by column.
inline Values valuesOf(const DoubleVec& v) {
  Values values;
  for (int i = 0; i < static_cast<int>(v.length()); ++i) values.push_back(v(i));
  return values;
}

/// What factorizations whose leading n by n triangle is R must agree on; `pivots` count from 0, and
/// there are none where nothing was exchanged.
inline Values gramTimesRandom(const DoubleGenMat& factor, const IntVec& pivots) {
  std::vector<int> order;
  for (int i = 0; i < static_cast<int>(pivots.length()); ++i) order.push_back(pivots(i));
  return gramTimesRandom(factor.data(), static_cast<int>(factor.rows()),
                         static_cast<int>(factor.cols()), order, 0);
}

}  // namespace bench
