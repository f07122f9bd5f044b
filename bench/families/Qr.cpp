#include <cmath>

#include <kilnbase/linalg/DoubleQRDecomp.h>

#include "families/Families.h"
#include "families/Ours.h"
#include "peers/FactorArrays.h"
#include "peers/Fortran.h"

namespace bench {

namespace {

const std::vector<Shape> kPivotedShapes = {{8, 8}, {32, 32}, {100, 100}, {500, 500}, {1000, 1000}};
const std::vector<Shape> kPlainShapes = {{8, 8},     {32, 32},     {100, 100},
                                         {500, 500}, {1000, 1000}, {2000, 2000}};
constexpr int kLargestLinpack = 1000;  // beyond it LINPACK takes seconds

Limits pivotedLimits(const Shape& shape) {
  return {.best = shape.rows <= 8 ? 0.9 : 1.1, .named = 1.0};
}

Limits unpivotedLimits(const Shape& shape) {
  if (shape.rows > 100) return {.best = 1.5};
  return {.best = shape.rows <= 8 ? 0.9 : 0.0, .named = 1.0};
}

Maker ours(int pivoting) {
  return [pivoting](const Shape& shape) {
    const DoubleGenMat a = matrixOf(randomMatrix(shape), shape);
    const auto run = [a, pivoting] {
      DoubleQRDecomp qr;
      qr.doPivoting(pivoting);
      qr.factor(a);
      return qr;
    };
    return contestant(run, [pivoting](const DoubleQRDecomp& qr) {
      return gramTimesRandom(qr, pivoting != 0 ? qr.pivots() : IntVec());
    });
  };
}

Values pivotedResult(const FactorArrays& f) {
  return gramTimesRandom(f.a.data(), f.rows, f.columns, f.pivots);
}

Values unpivotedResult(const FactorArrays& f) {
  return gramTimesRandom(f.a.data(), f.rows, f.columns);
}

Maker dgeqp3(FortranRoutine routine) {
  const auto call = [routine](FactorArrays& f) {
    int info = 0;
    routine(f.rows, f.columns, f.a.data(), f.rows, f.pivots.data(), f.diagonal.data(),
            f.work.data(), f.workSize, &info);
  };
  return queriedFactorMaker(randomArrays, call, pivotedResult);
}

Maker dgeqrf(FortranRoutine routine) {
  const auto call = [routine](FactorArrays& f) {
    int info = 0;
    routine(f.rows, f.columns, f.a.data(), f.rows, f.diagonal.data(), f.work.data(), f.workSize,
            &info);
  };
  return queriedFactorMaker(randomArrays, call, unpivotedResult);
}

Maker dqrdc(FortranRoutine routine, int job) {
  const auto call = [routine, job](FactorArrays& f) {
    routine(f.a.data(), f.rows, f.rows, f.columns, f.diagonal.data(), f.pivots.data(),
            f.work.data(), job);
  };
  return factorMaker(randomArrays, call, job != 0 ? pivotedResult : unpivotedResult);
}

}  // namespace

void addQr(Suite& suite) {
  const FortranRoutine qp3 = lapack().routine("dgeqp3_");
  const FortranRoutine qrf = lapack().routine("dgeqrf_");
  const FortranRoutine qrdc = linpack().routine("dqrdc_");
  Operation& pivoted =
      suite.add({"QR, pivoted", kPivotedShapes, {"Eigen"}, pivotedLimits, ours(1), {}});
  addPeer(pivoted, lapackName(), qp3, dgeqp3(qp3));
  addPeer(pivoted, "R", qrdc, dqrdc(qrdc, 1));
  Operation& plain =
      suite.add({"QR, unpivoted", kPlainShapes, {"Eigen"}, unpivotedLimits, ours(0), {}});
  plain.flops = [](const Shape& shape) { return 4.0 / 3.0 * std::pow(shape.rows, 3); };
  addPeer(plain, lapackName(), qrf, dgeqrf(qrf));
  addPeer(plain, "R", qrdc, dqrdc(qrdc, 0), kLargestLinpack);
}

}  // namespace bench
