#include <kilnbase/linalg/DoubleSVDecomp.h>

#include "families/Families.h"
#include "families/Ours.h"
#include "peers/FactorArrays.h"
#include "peers/Fortran.h"

namespace bench {

namespace {

const std::vector<Shape> kShapes = {{8, 8},     {32, 32},   {100, 100},
                                    {500, 500}, {1000, 50}, {10000, 100}};

Limits limits(const Shape& shape) {
  return {.best = shape.rows >= 500 ? 0.9 : 0.0, .named = 1.0};
}

Maker ours(int vectors) {
  return [vectors](const Shape& shape) {
    const DoubleGenMat a = matrixOf(randomMatrix(shape), shape);
    const auto run = [a, vectors] {
      DoubleSVDecomp svd;
      svd.computeLeftVecs(vectors);
      svd.computeAllLeftVecs(0);
      svd.computeRightVecs(vectors);
      svd.factor(a);
      return svd;
    };
    return contestant(run, [shape, vectors](const DoubleSVDecomp& svd) {
      const DoubleVec s = svd.singularValues();
      if (vectors == 0) return valuesOf(s);
      return spectrumAndProduct(s.data(), shape, svd.leftVecs().data(), svd.rightVecs().data(), 1,
                                shape.columns);
    });
  };
}

struct SvdArrays : FactorArrays {
  explicit SvdArrays(const Shape& shape)
      : FactorArrays(shape, randomMatrix(shape)),
        u(a.size()),
        v(a.size()),
        e(diagonal.size()),
        integers(8 * diagonal.size()) {}

  Values u;
  Values v;  ///< Transposed by LAPACK.
  Values e;
  std::vector<int> integers;
};

SvdArrays arraysFor(const Shape& shape) {
  return SvdArrays(shape);
}

Values spectrum(const SvdArrays& f) {
  return f.diagonal;
}

Values lapackResult(const SvdArrays& f) {
  return spectrumAndProduct(f.diagonal.data(), {f.rows, f.columns}, f.u.data(), f.v.data(),
                            f.columns, 1);
}

Values linpackResult(const SvdArrays& f) {
  return spectrumAndProduct(f.diagonal.data(), {f.rows, f.columns}, f.u.data(), f.v.data(), 1,
                            f.columns);
}

// `vectors` is 'S' for as many as columns, 'N' for none.
Maker dgesvd(FortranRoutine routine, char vectors) {
  const auto call = [=](SvdArrays& f) {
    int info = 0;
    routine(vectors, vectors, f.rows, f.columns, f.a.data(), f.rows, f.diagonal.data(), f.u.data(),
            f.rows, f.v.data(), f.columns, f.work.data(), f.workSize, &info);
  };
  return queriedFactorMaker(arraysFor, call, vectors == 'S' ? lapackResult : spectrum);
}

Maker dgesdd(FortranRoutine routine, char vectors) {
  const auto call = [=](SvdArrays& f) {
    int info = 0;
    routine(vectors, f.rows, f.columns, f.a.data(), f.rows, f.diagonal.data(), f.u.data(), f.rows,
            f.v.data(), f.columns, f.work.data(), f.workSize, f.integers.data(), &info);
  };
  return queriedFactorMaker(arraysFor, call, vectors == 'S' ? lapackResult : spectrum);
}

Maker dsvdc(FortranRoutine routine, int job) {
  const auto call = [=](SvdArrays& f) {
    int info = 0;
    routine(f.a.data(), f.rows, f.rows, f.columns, f.diagonal.data(), f.e.data(), f.u.data(),
            f.rows, f.v.data(), f.columns, f.work.data(), job, &info);
  };
  return factorMaker(arraysFor, call, job != 0 ? linpackResult : spectrum);
}

void addOperation(Suite& suite, const std::string& name, bool vectors) {
  const FortranRoutine gesvd = lapack().routine("dgesvd_");
  const FortranRoutine gesdd = lapack().routine("dgesdd_");
  const FortranRoutine svdc = linpack().routine("dsvdc_");
  const char letter = vectors ? 'S' : 'N';
  Operation& operation = suite.add({name, kShapes, {lapackName(), "R"}, limits, ours(vectors), {}});
  addPeer(operation, lapackName(), gesvd, dgesvd(gesvd, letter));
  addPeer(operation, "R", svdc, dsvdc(svdc, vectors ? 21 : 0));
  addPeer(operation, "dgesdd", gesdd, dgesdd(gesdd, letter));
}

}  // namespace

void addSvd(Suite& suite) {
  addOperation(suite, "SVD, all vectors", true);
  // The others would take seconds.
  const FortranRoutine gesdd = lapack().routine("dgesdd_");
  Operation& large =
      suite.add({"SVD, all vectors, large", {{1000, 1000}}, {}, limits, ours(true), {}});
  addPeer(large, "dgesdd", gesdd, dgesdd(gesdd, 'S'));
  addOperation(suite, "SVD, values only", false);
}

}  // namespace bench
