#include <kilnbase/auto/containers/TsparseMatrix.h>

#include "families/Families.h"
#include "families/Ours.h"

namespace bench {

namespace {

// 10^6 elements each, 100 and 10 a column.
const std::vector<Shape> kShapes = {{10000, 10000}, {100000, 100000}};

Limits limits(const Shape&) {
  return {.named = 1.1};
}

TsparseMatrix sparse(const Shape& shape) {
  const SparseColumns columns = sparseColumns(shape);
  const unsigned n = static_cast<unsigned>(columns.perColumn);
  TsparseMatrix a(shape.rows, shape.columns, columns.perColumn * shape.columns);
  a.rows() = shape.rows;
  for (int c = 0; c < shape.columns; ++c) {
    const std::ptrdiff_t first = std::ptrdiff_t{c} * columns.perColumn;
    a.addCol(IntVec(columns.rows.data() + first, n), DoubleVec(columns.values.data() + first, n),
             0);
  }
  return a;
}

}  // namespace

void addSparse(Suite& suite) {
  const auto read = [](const DoubleVec& y) { return valuesOf(y); };
  const auto times = [=](const Shape& shape) {
    return contestant(
        [a = sparse(shape), v = vectorOf(gaussian(shape.columns, 2))] { return product(a, v); },
        read);
  };
  const auto transposedTimes = [=](const Shape& shape) {
    return contestant(
        [a = sparse(shape), v = vectorOf(gaussian(shape.rows, 2))] { return product(v, a); }, read);
  };
  suite.add({"sparse A v", kShapes, {"Eigen"}, limits, times, {}});
  suite.add({"sparse v A", kShapes, {"Eigen"}, limits, transposedTimes, {}});
}

}  // namespace bench
