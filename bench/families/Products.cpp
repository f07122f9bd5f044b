#include <cmath>

#include "families/Families.h"
#include "families/Ours.h"
#include "peers/Fortran.h"

namespace bench {

namespace {

const std::vector<Shape> kMatrixShapes = {{8, 8},     {32, 32},     {100, 100},
                                          {500, 500}, {1000, 1000}, {2000, 2000}};
const std::vector<Shape> kVectorShapes = {{8, 8}, {32, 32}, {100, 100}, {500, 500}, {1000, 1000}};

Limits matrixLimits(const Shape&) {
  return {.best = 1.0};
}

Limits vectorLimits(const Shape& shape) {
  return {.best = shape.rows <= 32 ? 1.0 : 1.1};
}

template <class Run>
Maker withMatrices(Run run) {
  return [run](const Shape& shape) {
    const DoubleGenMat a = matrixOf(randomMatrix(shape, 1), shape);
    const DoubleGenMat b = matrixOf(randomMatrix(shape, 2), shape);
    return contestant([run, a, b] { return run(a, b); },
                      [](const DoubleGenMat& c) { return valuesOf(c); });
  };
}

template <class Run>
Maker withVector(Run run) {
  return [run](const Shape& shape) {
    const DoubleGenMat a = matrixOf(randomMatrix(shape), shape);
    const DoubleVec v = vectorOf(gaussian(shape.rows, 2));
    return contestant([run, a, v] { return run(a, v); },
                      [](const DoubleVec& y) { return valuesOf(y); });
  };
}

// C = op(A) op(B).
Maker dgemm(FortranRoutine routine, char transposeA, char transposeB) {
  return [=](const Shape& shape) {
    const int n = shape.rows;
    const Values a = randomMatrix(shape, 1);
    const Values b = randomMatrix(shape, 2);
    const auto run = [=, c = Values(a)]() mutable -> const Values& {
      routine(transposeA, transposeB, n, n, n, 1.0, a.data(), n, b.data(), n, 0.0, c.data(), n);
      return c;
    };
    return contestant(run, std::identity());
  };
}

// y = op(A) v.
Maker dgemv(FortranRoutine routine, char transpose) {
  return [=](const Shape& shape) {
    const int n = shape.rows;
    const Values a = randomMatrix(shape);
    const Values v = gaussian(n, 2);
    const auto run = [=, y = Values(v)]() mutable -> const Values& {
      routine(transpose, n, n, 1.0, a.data(), n, v.data(), 1, 0.0, y.data(), 1);
      return y;
    };
    return contestant(run, std::identity());
  };
}

void addMatrixProduct(Suite& suite, const std::string& name, Maker ours, char transposeA,
                      char transposeB) {
  Operation& operation = suite.add({name, kMatrixShapes, {}, matrixLimits, std::move(ours), {}});
  operation.flops = [](const Shape& shape) { return 2.0 * std::pow(shape.rows, 3); };
  const FortranRoutine routine = lapack().routine("dgemm_");
  addPeer(operation, lapackName(), routine, dgemm(routine, transposeA, transposeB));
}

void addVectorProduct(Suite& suite, const std::string& name, Maker ours, char transpose) {
  Operation& operation = suite.add({name, kVectorShapes, {}, vectorLimits, std::move(ours), {}});
  const FortranRoutine routine = lapack().routine("dgemv_");
  addPeer(operation, lapackName(), routine, dgemv(routine, transpose));
}

}  // namespace

void addProducts(Suite& suite) {
  using Matrix = DoubleGenMat;
  addMatrixProduct(suite, "product A B",
                   withMatrices([](const Matrix& a, const Matrix& b) { return product(a, b); }),
                   'N', 'N');
  addMatrixProduct(suite, "product A' B", withMatrices([](const Matrix& a, const Matrix& b) {
                     return transposeProduct(a, b);
                   }),
                   'T', 'N');
  addMatrixProduct(
      suite, "product A B'",
      withMatrices([](const Matrix& a, const Matrix& b) { return transProduct(a, b); }), 'N', 'T');
  addVectorProduct(suite, "product A v",
                   withVector([](const Matrix& a, const DoubleVec& v) { return product(a, v); }),
                   'N');
  addVectorProduct(suite, "product v A",
                   withVector([](const Matrix& a, const DoubleVec& v) { return product(v, a); }),
                   'T');
}

}  // namespace bench
