// The routine itself, as LAPACK's are called: on arrays that are there already.
#include <kilnbase/linalg/linpack/dspfa.h>
#include <kilnbase/linalg/linpack/dspsl.h>

#include "families/Families.h"
#include "peers/FactorArrays.h"
#include "peers/Fortran.h"

namespace bench {

namespace {

using namespace vxKilnBase::linpack;

const std::vector<Shape> kShapes = {{8, 8},     {32, 32},   {100, 100},
                                    {200, 200}, {500, 500}, {1000, 1000}};

// The best peer is the blocked factorization of twice the storage.
Limits limits(const Shape& shape) {
  return {.best = shape.rows <= 200 ? 1.0 : 1.5, .named = 0.4};
}

// The upper triangle, column by column.
FactorArrays packedArrays(const Shape& shape) {
  const Values whole = symmetricMatrix(shape);
  Values elements;
  for (auto column = whole.begin(); column != whole.end(); column += shape.rows) {
    elements.insert(elements.end(), column, column + 1 + (column - whole.begin()) / shape.rows);
  }
  return {shape, elements};
}

FactorArrays fullArrays(const Shape& shape) {
  return {shape, symmetricMatrix(shape)};
}

// What all factorizations agree on is the solution of a system: `solve` gets the factors and a
// right-hand side.
template <class Solve>
auto solution(const Solve& solve) {
  return [solve](const FactorArrays& factored) {
    Values x = gaussian(factored.rows, 2);
    solve(factored, x.data());
    return x;
  };
}

Maker ours() {
  const auto factor = [](FactorArrays& f) { dspfa(f.a.data(), f.rows, f.pivots.data()); };
  return factorMaker(packedArrays, factor, solution([](const FactorArrays& f, double* x) {
                       dspsl(f.a.data(), f.rows, f.pivots.data(), x);
                     }));
}

Maker dsptrf(FortranRoutine sptrf, FortranRoutine sptrs) {
  const auto factor = [sptrf](FactorArrays& f) {
    int info = 0;
    sptrf('U', f.rows, f.a.data(), f.pivots.data(), &info);
  };
  return factorMaker(packedArrays, factor, solution([sptrs](const FactorArrays& f, double* x) {
                       int info = 0;
                       sptrs('U', f.rows, 1, f.a.data(), f.pivots.data(), x, f.rows, &info);
                     }));
}

Maker dsytrf(FortranRoutine sytrf, FortranRoutine sytrs) {
  const auto factor = [sytrf](FactorArrays& f) {
    int info = 0;
    sytrf('U', f.rows, f.a.data(), f.rows, f.pivots.data(), f.work.data(), f.workSize, &info);
  };
  return queriedFactorMaker(fullArrays, factor, solution([sytrs](const FactorArrays& f, double* x) {
                              int info = 0;
                              sytrs('U', f.rows, 1, f.a.data(), f.rows, f.pivots.data(), x, f.rows,
                                    &info);
                            }));
}

}  // namespace

void addSymmetric(Suite& suite) {
  const FortranRoutine sptrf = lapack().routine("dsptrf_");
  const FortranRoutine sytrf = lapack().routine("dsytrf_");
  Operation& operation =
      suite.add({"symmetric indefinite, packed", kShapes, {"dsptrf"}, limits, ours(), {}});
  addPeer(operation, "dsptrf", sptrf, dsptrf(sptrf, lapack().routine("dsptrs_")));
  addPeer(operation, "dsytrf", sytrf, dsytrf(sytrf, lapack().routine("dsytrs_")));
}

}  // namespace bench
