// Contestants made of LAPACK's least squares.
#pragma once

#include "FactorArrays.h"
#include "Fortran.h"

namespace bench {

/// With a right-hand side, which is overwritten too.
struct LeastSquaresArrays : FactorArrays {
  LeastSquaresArrays(const Shape& shape, Values elements, Values measured)
      : FactorArrays(shape, std::move(elements)),
        rightHandSide(std::move(measured)),
        b(rightHandSide),
        x(static_cast<std::size_t>(shape.columns)) {}

  void load() {
    FactorArrays::load();
    std::copy(rightHandSide.begin(), rightHandSide.end(), b.begin());
  }

  Values solution() const { return Values(b.begin(), b.begin() + columns); }

  Values rightHandSide;
  Values b;
  Values x;
};

/// By QR with pivoting. `arraysFor` makes the arrays for a shape.
inline Maker dgelsyMaker(FortranRoutine routine, LeastSquaresArrays (*arraysFor)(const Shape&)) {
  const auto call = [routine](LeastSquaresArrays& f) {
    int rank = 0;
    int info = 0;
    routine(f.rows, f.columns, 1, f.a.data(), f.rows, f.b.data(), f.rows, f.pivots.data(), 1e-12,
            &rank, f.work.data(), f.workSize, &info);
  };
  return queriedFactorMaker(arraysFor, call,
                            [](const LeastSquaresArrays& f) { return f.solution(); });
}

/// By QR without pivoting.
inline Maker dgelsMaker(FortranRoutine routine, LeastSquaresArrays (*arraysFor)(const Shape&)) {
  const auto call = [routine](LeastSquaresArrays& f) {
    int info = 0;
    routine('N', f.rows, f.columns, 1, f.a.data(), f.rows, f.b.data(), f.rows, f.work.data(),
            f.workSize, &info);
  };
  return queriedFactorMaker(arraysFor, call,
                            [](const LeastSquaresArrays& f) { return f.solution(); });
}

}  // namespace bench
