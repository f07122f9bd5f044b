// Solving for many right-hand sides by a decomposition that is there already. The shape is that of
// the right-hand sides.
#include <kilnbase/linalg/DoubleChDecomp.h>
#include <kilnbase/linalg/DoubleLeastSqQR.h>

#include "families/Families.h"
#include "families/Ours.h"
#include "peers/Fortran.h"

namespace bench {

namespace {

Limits limits(const Shape&) {
  return {.best = 1.0, .named = 1.0};
}

// Solves by a decomposition of the matrix that `matrixFor` gives for the right-hand sides.
template <class Decomposition>
Maker ours(Values (*matrixFor)(const Shape&), int pivoting) {
  return [=](const Shape& shape) {
    Decomposition decomposition;
    decomposition.doPivoting(pivoting);
    const Values elements = matrixFor(shape);
    const int columns = static_cast<int>(elements.size()) / shape.rows;
    decomposition.factor(matrixOf(elements, {shape.rows, columns}));
    const auto run = [decomposition, b = matrixOf(rightHandSides(shape), shape)] {
      return decomposition.solve(b);
    };
    return contestant(run, [](const DoubleGenMat& x) { return valuesOf(x); });
  };
}

// With the copying of the right-hand sides, which are overwritten.
Maker dpotrs(FortranRoutine dpotrf, FortranRoutine dpotrs) {
  return [=](const Shape& shape) {
    Values factor = squareMatrixFor(shape);
    int info = 0;
    dpotrf('U', shape.rows, factor.data(), shape.rows, &info);
    const auto run = [=, b = rightHandSides(shape), x = Values()]() mutable -> const Values& {
      x = b;
      int failed = 0;
      dpotrs('U', shape.rows, shape.columns, factor.data(), shape.rows, x.data(), shape.rows,
             &failed);
      return x;
    };
    return contestant(run, [](const Values& x) { return x; });
  };
}

}  // namespace

void addRightHandSides(Suite& suite) {
  const std::vector<Shape> square = {{32, 32}, {100, 10}, {100, 100}, {500, 10}, {500, 500}};
  const FortranRoutine potrf = lapack().routine("dpotrf_");
  const FortranRoutine potrs = lapack().routine("dpotrs_");
  Operation& cholesky = suite.add({"Cholesky, right-hand sides",
                                   square,
                                   {"Eigen"},
                                   limits,
                                   ours<DoubleChDecomp>(squareMatrixFor, 0),
                                   {}});
  addPeer(cholesky, lapackName(), potrs, dpotrs(potrf, potrs));
  suite.add({"QR, right-hand sides",
             square,
             {"Eigen"},
             limits,
             ours<DoubleQRDecomp>(squareMatrixFor, 1),
             {}});
  const std::vector<Shape> tall = {{1000, 10}, {1000, 100}, {10000, 100}};
  suite.add({"least squares, right-hand sides",
             tall,
             {"Eigen"},
             limits,
             ours<DoubleLeastSqQR>(tallMatrixFor, 1),
             {}});
}

}  // namespace bench
