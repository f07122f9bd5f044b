#include <kilnbase/linalg/DoubleSymEig.h>

#include "families/Families.h"
#include "families/Ours.h"
#include "peers/FactorArrays.h"
#include "peers/Fortran.h"

namespace bench {

namespace {

const std::vector<Shape> kShapes = {{3, 3}, {4, 4}, {8, 8}, {32, 32}, {100, 100}, {500, 500}};

Limits limits(const Shape&) {
  return {.best = 1.2};
}

Maker ours(bool vectors) {
  return [vectors](const Shape& shape) {
    const DoubleSymMat a = toSymMat(matrixOf(symmetricMatrix(shape), shape));
    const auto run = [a, vectors] {
      DoubleSymEig eigen;
      eigen.computeVecs(vectors ? 1 : 0);
      eigen.factor(a);
      return eigen;
    };
    return contestant(run, [n = shape.rows, vectors](const DoubleSymEig& eigen) {
      const DoubleVec values = eigen.eigenValues();
      if (!vectors) return valuesOf(values);
      const double* v = eigen.eigenVecs().data();
      return spectrumAndProduct(values.data(), {n, n}, v, v, 1, n);
    });
  };
}

struct EigenArrays : FactorArrays {
  explicit EigenArrays(const Shape& shape)
      : FactorArrays(shape, symmetricMatrix(shape)), integers(diagonal.size() * 5 + 3) {}

  std::vector<int> integers;
};

EigenArrays arraysFor(const Shape& shape) {
  return EigenArrays(shape);
}

Values spectrum(const EigenArrays& f) {
  return f.diagonal;
}

Values lapackResult(const EigenArrays& f) {
  return spectrumAndProduct(f.diagonal.data(), {f.rows, f.rows}, f.a.data(), f.a.data(), 1, f.rows);
}

// `vectors` is 'V' for all of them, 'N' for none.
Maker dsyev(FortranRoutine routine, char vectors) {
  const auto call = [=](EigenArrays& f) {
    int info = 0;
    routine(vectors, 'L', f.rows, f.a.data(), f.rows, f.diagonal.data(), f.work.data(), f.workSize,
            &info);
  };
  return queriedFactorMaker(arraysFor, call, vectors == 'V' ? lapackResult : spectrum);
}

Maker dsyevd(FortranRoutine routine, char vectors) {
  const auto call = [=](EigenArrays& f) {
    int info = 0;
    routine(vectors, 'L', f.rows, f.a.data(), f.rows, f.diagonal.data(), f.work.data(), f.workSize,
            f.integers.data(), static_cast<int>(f.integers.size()), &info);
  };
  return queriedFactorMaker(arraysFor, call, vectors == 'V' ? lapackResult : spectrum);
}

void addOperation(Suite& suite, const std::string& name, bool vectors) {
  const FortranRoutine syev = lapack().routine("dsyev_");
  const FortranRoutine syevd = lapack().routine("dsyevd_");
  const char letter = vectors ? 'V' : 'N';
  Operation& operation = suite.add({name, kShapes, {}, limits, ours(vectors), {}});
  addPeer(operation, lapackName(), syev, dsyev(syev, letter));
  addPeer(operation, "dsyevd", syevd, dsyevd(syevd, letter));
}

}  // namespace

void addEigenvalues(Suite& suite) {
  addOperation(suite, "eigenvalues and vectors", true);
  addOperation(suite, "eigenvalues only", false);
}

}  // namespace bench
