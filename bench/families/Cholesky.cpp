#include <cmath>

#include <kilnbase/linalg/DoubleChDecomp.h>

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
  return {.best = shape.rows <= 8 ? 0.9 : 1.5, .named = 1.0};
}

Limits plainLimits(const Shape&) {
  return {.best = 1.5, .named = 1.0};
}

Maker ours(int pivoting) {
  return [pivoting](const Shape& shape) {
    const DoubleGenMat a = matrixOf(positiveDefinite(shape.rows), shape);
    const auto run = [a, pivoting] {
      DoubleChDecomp cholesky;
      cholesky.doPivoting(pivoting);
      cholesky.factor(a);
      return cholesky;
    };
    return contestant(run, [pivoting](const DoubleChDecomp& cholesky) {
      return gramTimesRandom(cholesky, pivoting != 0 ? cholesky.pivots() : IntVec());
    });
  };
}

FactorArrays definiteArrays(const Shape& shape) {
  return {shape, positiveDefinite(shape.rows)};
}

Values pivotedResult(const FactorArrays& f) {
  return gramTimesRandom(f.a.data(), f.rows, f.columns, f.pivots);
}

Values unpivotedResult(const FactorArrays& f) {
  return gramTimesRandom(f.a.data(), f.rows, f.columns);
}

Maker dpotrf(FortranRoutine routine) {
  const auto call = [routine](FactorArrays& f) {
    int info = 0;
    routine('U', f.rows, f.a.data(), f.rows, &info);
  };
  return factorMaker(definiteArrays, call, unpivotedResult);
}

Maker dpstrf(FortranRoutine routine) {
  const auto call = [routine](FactorArrays& f) {
    int rank = 0;
    int info = 0;
    routine('U', f.rows, f.a.data(), f.rows, f.pivots.data(), &rank, -1.0, f.work.data(), &info);
  };
  return factorMaker(definiteArrays, call, pivotedResult);
}

Maker dchdc(FortranRoutine routine, int job) {
  const auto call = [routine, job](FactorArrays& f) {
    int info = 0;
    routine(f.a.data(), f.rows, f.rows, f.work.data(), f.pivots.data(), job, &info);
  };
  return factorMaker(definiteArrays, call, job != 0 ? pivotedResult : unpivotedResult);
}

}  // namespace

void addCholesky(Suite& suite) {
  const FortranRoutine potrf = lapack().routine("dpotrf_");
  const FortranRoutine pstrf = lapack().routine("dpstrf_");
  const FortranRoutine chdc = linpack().routine("dchdc_");
  Operation& pivoted =
      suite.add({"Cholesky, pivoted", kPivotedShapes, {"R"}, pivotedLimits, ours(1), {}});
  addPeer(pivoted, lapackName(), pstrf, dpstrf(pstrf));
  addPeer(pivoted, "R", chdc, dchdc(chdc, 1));
  Operation& plain =
      suite.add({"Cholesky, unpivoted", kPlainShapes, {"R"}, plainLimits, ours(0), {}});
  plain.flops = [](const Shape& shape) { return 1.0 / 3.0 * std::pow(shape.rows, 3); };
  addPeer(plain, lapackName(), potrf, dpotrf(potrf));
  addPeer(plain, "R", chdc, dchdc(chdc, 0), kLargestLinpack);
}

}  // namespace bench
