// The routines themselves, as LAPACK's are called: on arrays that are there already.
#include <algorithm>
#include <cmath>

#include <kilnbase/linalg/linpack/dgeco.h>
#include <kilnbase/linalg/linpack/dgedi.h>
#include <kilnbase/linalg/linpack/dgefa.h>
#include <kilnbase/linalg/linpack/dgesl.h>

#include "families/Families.h"
#include "peers/FactorArrays.h"
#include "peers/Fortran.h"

namespace bench {

namespace {

using namespace vxKilnBase::linpack;

const std::vector<Shape> kShapes = {{8, 8},     {32, 32},   {100, 100},
                                    {200, 200}, {500, 500}, {1000, 1000}};

Limits limits(const Shape&) {
  return {.best = 0.85};
}

// With a right-hand side, and room for the estimates and inverses of LAPACK.
struct Arrays : FactorArrays {
  explicit Arrays(const Shape& shape)
      : FactorArrays(shape, randomMatrix(shape)),
        b(gaussian(rows, 2)),
        x(b.size()),
        integers(b.size()) {
    constexpr int kBlock = 64;
    workSize = kBlock * rows;
    work.resize(static_cast<std::size_t>(workSize));
  }

  void load() {
    FactorArrays::load();
    x = b;
  }

  Values b;
  Values x;
  std::vector<int> integers;
};

Arrays arraysFor(const Shape& shape) {
  return Arrays(shape);
}

// What all factorizations agree on is the solution of a system.
struct Library {
  std::function<void(Arrays&)> factor;
  std::function<void(Arrays&)> factorWithCondition;
  std::function<void(Arrays&)> solve;
  std::function<void(Arrays&)> invert;
};

Values solution(const Library& library, const Arrays& factored) {
  Arrays copy = factored;
  copy.x = copy.b;
  library.solve(copy);
  return copy.x;
}

Values inverseTimesVector(const Arrays& f) {
  Values product(f.b.size(), 0.0);
  for (std::size_t j = 0; j < f.b.size(); ++j) {
    for (std::size_t i = 0; i < f.b.size(); ++i) product[i] += f.a[j * f.b.size() + i] * f.b[j];
  }
  return product;
}

Library ours() {
  const auto factor = [](Arrays& f) { dgefa(f.a.data(), f.rows, f.rows, f.pivots.data()); };
  const auto estimate = [](Arrays& f) {
    benchmark::DoNotOptimize(dgeco(f.a.data(), f.rows, f.rows, f.pivots.data(), f.work.data()));
  };
  const auto solve = [](Arrays& f) {
    dgesl(f.a.data(), f.rows, f.rows, f.pivots.data(), f.x.data(), 0);
  };
  const auto invert = [](Arrays& f) {
    dgedi(f.a.data(), f.rows, f.rows, f.pivots.data(), nullptr, f.work.data(), 1);
  };
  return {factor, estimate, solve, invert};
}

Library ofLapack() {
  const FortranRoutine getrf = lapack().routine("dgetrf_"), getrs = lapack().routine("dgetrs_"),
                       gecon = lapack().routine("dgecon_"), getri = lapack().routine("dgetri_");
  const auto factor = [getrf](Arrays& f) {
    int info = 0;
    getrf(f.rows, f.rows, f.a.data(), f.rows, f.pivots.data(), &info);
  };
  const auto estimate = [factor, gecon](Arrays& f) {
    double norm = 0.0, rcond = 0.0;
    for (auto column = f.a.cbegin(); column != f.a.cend(); column += f.rows) {
      double sum = 0.0;
      for (auto x = column; x != column + f.rows; ++x) sum += std::abs(*x);
      norm = std::max(norm, sum);
    }
    factor(f);
    int info = 0;
    gecon('1', f.rows, f.a.data(), f.rows, norm, &rcond, f.work.data(), f.integers.data(), &info);
    benchmark::DoNotOptimize(rcond);
  };
  const auto solve = [getrs](Arrays& f) {
    int info = 0;
    getrs('N', f.rows, 1, f.a.data(), f.rows, f.pivots.data(), f.x.data(), f.rows, &info);
  };
  const auto invert = [getri](Arrays& f) {
    int info = 0;
    getri(f.rows, f.a.data(), f.rows, f.pivots.data(), f.work.data(), f.workSize, &info);
  };
  return {factor, estimate, solve, invert};
}

template <class Second>
std::function<void(Arrays&)> factorAnd(const Library& library, const Second& second) {
  return [library, second](Arrays& f) {
    library.factor(f);
    second(f);
  };
}

Maker factoring(const Library& library) {
  return factorMaker(arraysFor, library.factor,
                     [library](const Arrays& f) { return solution(library, f); });
}

Maker estimating(const Library& library) {
  return factorMaker(arraysFor, library.factorWithCondition,
                     [library](const Arrays& f) { return solution(library, f); });
}

Maker solving(const Library& library) {
  return factorMaker(arraysFor, factorAnd(library, library.solve),
                     [](const Arrays& f) { return f.x; });
}

Maker inverting(const Library& library) {
  return factorMaker(arraysFor, factorAnd(library, library.invert), inverseTimesVector);
}

}  // namespace

void addLu(Suite& suite) {
  const FortranRoutine installed = lapack().routine("dgetrf_");
  const auto add = [&](const std::string& name, Maker (*way)(const Library&)) -> Operation& {
    Operation& operation = suite.add({name, kShapes, {}, limits, way(ours()), {}});
    if (installed) operation.peers.push_back({lapackName(), way(ofLapack())});
    return operation;
  };
  Operation& factorization = add("LU", factoring);
  factorization.shapes.push_back({2000, 2000});
  factorization.flops = [](const Shape& shape) { return 2.0 / 3.0 * std::pow(shape.rows, 3); };
  add("LU with condition", estimating);
  add("LU and solve", solving);
  add("LU and inverse", inverting);
}

}  // namespace bench
