#include <kilnbase/linalg/DoubleLeastSqQR.h>

#include "families/Families.h"
#include "families/Ours.h"
#include "peers/LeastSquaresArrays.h"

namespace bench {

namespace {

const std::vector<Shape> kShapes = {{100, 10}, {1000, 50}, {10000, 100}};

Limits limits(const Shape&) {
  return {.best = 1.1, .named = 1.0};
}

Contestant ours(const Shape& shape) {
  const DoubleGenMat a = matrixOf(randomMatrix(shape), shape);
  const DoubleVec b = vectorOf(gaussian(shape.rows, 2));
  const auto run = [a, b] { return DoubleLeastSqQR(a).solve(b); };
  return contestant(run, [](const DoubleVec& x) { return valuesOf(x); });
}

LeastSquaresArrays arraysFor(const Shape& shape) {
  return {shape, randomMatrix(shape), gaussian(shape.rows, 2)};
}

// Coefficients only: the result takes the place of Qᵀ b, and the exchange of columns is undone.
void solveFactored(FortranRoutine dqrsl, LeastSquaresArrays& f) {
  constexpr int kCoefficients = 100;
  double* const unused = nullptr;
  int info = 0;
  dqrsl(f.a.data(), f.rows, f.rows, f.columns, f.diagonal.data(), f.b.data(), unused, f.b.data(),
        f.work.data(), unused, unused, kCoefficients, &info);
  for (std::size_t j = 0; j < f.x.size(); ++j) {
    f.x[static_cast<std::size_t>(f.pivots[j] - 1)] = f.work[j];
  }
}

Maker dqrdcAndDqrsl(FortranRoutine dqrdc, FortranRoutine dqrsl) {
  const auto call = [dqrdc, dqrsl](LeastSquaresArrays& f) {
    dqrdc(f.a.data(), f.rows, f.rows, f.columns, f.diagonal.data(), f.pivots.data(), f.work.data(),
          1);
    solveFactored(dqrsl, f);
  };
  return factorMaker(arraysFor, call, [](const LeastSquaresArrays& f) { return f.x; });
}

}  // namespace

void addLeastSquares(Suite& suite) {
  Operation& operation =
      suite.add({"least squares, pivoted", kShapes, {"Eigen"}, limits, ours, {}});
  const FortranRoutine gelsy = lapack().routine("dgelsy_");
  addPeer(operation, lapackName(), gelsy, dgelsyMaker(gelsy, arraysFor));
  const FortranRoutine qrsl = linpack().routine("dqrsl_");
  addPeer(operation, "R", qrsl, dqrdcAndDqrsl(linpack().routine("dqrdc_"), qrsl));
}

}  // namespace bench
