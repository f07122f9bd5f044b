#include <Eigen/Sparse>

#include "eigen/Eigen.h"

namespace bench::eigen {

namespace {

using Matrix = Eigen::SparseMatrix<double>;
using Vector = Eigen::VectorXd;

Matrix sparse(const Shape& shape) {
  const SparseColumns columns = sparseColumns(shape);
  Matrix a(shape.rows, shape.columns);
  a.reserve(Eigen::VectorXi::Constant(shape.columns, columns.perColumn));
  for (std::size_t k = 0; k < columns.rows.size(); ++k) {
    a.insert(columns.rows[k], static_cast<int>(k) / columns.perColumn) = columns.values[k];
  }
  a.makeCompressed();
  return a;
}

}  // namespace

void addSparse(Suite& suite) {
  const auto read = [](const Vector& y) { return valuesOf(y); };
  const auto times = [=](const Shape& shape) {
    return contestant(
        [a = sparse(shape), v = vectorOf(gaussian(shape.columns, 2))]() -> Vector { return a * v; },
        read);
  };
  const auto transposedTimes = [=](const Shape& shape) {
    return contestant(
        [a = sparse(shape), v = vectorOf(gaussian(shape.rows, 2))]() -> Vector {
          return a.transpose() * v;
        },
        read);
  };
  suite.addPeer("sparse A v", {"Eigen", times});
  suite.addPeer("sparse v A", {"Eigen", transposedTimes});
}

}  // namespace bench::eigen
