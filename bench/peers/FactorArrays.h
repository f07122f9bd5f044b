// Contestants made of Fortran factorizations, which overwrite the matrix that they are given.
#pragma once

#include <algorithm>
#include <type_traits>

#include "Data.h"

namespace bench {

/// The arrays that factorizations by Fortran routines need, all but the matrix used as each likes.
struct FactorArrays {
  FactorArrays(const Shape& shape, Values elements)
      : rows(shape.rows),
        columns(shape.columns),
        matrix(std::move(elements)),
        a(matrix.size()),
        pivots(static_cast<std::size_t>(columns)),
        diagonal(static_cast<std::size_t>(columns)),
        work(static_cast<std::size_t>(2 * std::max(rows, columns))) {}

  /// Puts the matrix into `a` and leaves all columns free to be exchanged.
  void load() {
    std::copy(matrix.begin(), matrix.end(), a.begin());
    std::fill(pivots.begin(), pivots.end(), 0);
  }

  int rows;
  int columns;
  Values matrix;
  Values a;
  std::vector<int> pivots;
  Values diagonal;  ///< What the routine stores beside the triangle.
  Values work;      ///< Twice as many elements as the longer side of the matrix, or as asked for.
  int workSize = 0;
};

/// Times `call(arrays)` together with the loading of the matrix. `arraysFor` makes the arrays for a
/// shape; `read` gets them.
template <class ArraysFor, class Call, class Read>
Maker factorMaker(ArraysFor arraysFor, Call call, Read read) {
  using Arrays = std::invoke_result_t<ArraysFor, const Shape&>;
  return [=](const Shape& shape) {
    const auto run = [arrays = arraysFor(shape), call]() mutable -> const Arrays& {
      arrays.load();
      call(arrays);
      return arrays;
    };
    return contestant(run, read);
  };
}

/// The same for LAPACK routines that are first asked for the best size of their work array: `call`
/// passes `work` and `workSize`, which is -1 for the question.
template <class ArraysFor, class Call, class Read>
Maker queriedFactorMaker(ArraysFor arraysFor, Call call, Read read) {
  const auto withWork = [=](const Shape& shape) {
    auto arrays = arraysFor(shape);
    arrays.workSize = -1;
    call(arrays);
    arrays.workSize = static_cast<int>(arrays.work.front());
    arrays.work.resize(static_cast<std::size_t>(arrays.workSize));
    return arrays;
  };
  return factorMaker(withWork, call, read);
}

inline FactorArrays randomArrays(const Shape& shape) {
  return {shape, randomMatrix(shape)};
}

}  // namespace bench
