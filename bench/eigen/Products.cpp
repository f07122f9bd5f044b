#include "eigen/Eigen.h"

namespace bench::eigen {

namespace {

using Matrix = Eigen::MatrixXd;
using Vector = Eigen::VectorXd;

template <class Run>
void addMatrixProduct(Suite& suite, const std::string& name, Run run) {
  const auto make = [run](const Shape& shape) {
    return contestant([run, a = matrixOf(randomMatrix(shape, 1), shape),
                       b = matrixOf(randomMatrix(shape, 2), shape)] { return run(a, b); },
                      [](const Matrix& c) { return valuesOf(c); });
  };
  suite.addPeer(name, {"Eigen", make});
}

template <class Run>
void addVectorProduct(Suite& suite, const std::string& name, Run run) {
  const auto make = [run](const Shape& shape) {
    return contestant([run, a = matrixOf(randomMatrix(shape), shape),
                       v = vectorOf(gaussian(shape.rows, 2))] { return run(a, v); },
                      [](const Vector& y) { return valuesOf(y); });
  };
  suite.addPeer(name, {"Eigen", make});
}

}  // namespace

void addProducts(Suite& suite) {
  addMatrixProduct(suite, "product A B",
                   [](const Matrix& a, const Matrix& b) -> Matrix { return a * b; });
  addMatrixProduct(suite, "product A' B",
                   [](const Matrix& a, const Matrix& b) -> Matrix { return a.transpose() * b; });
  addMatrixProduct(suite, "product A B'",
                   [](const Matrix& a, const Matrix& b) -> Matrix { return a * b.transpose(); });
  addVectorProduct(suite, "product A v",
                   [](const Matrix& a, const Vector& v) -> Vector { return a * v; });
  addVectorProduct(suite, "product v A",
                   [](const Matrix& a, const Vector& v) -> Vector { return a.transpose() * v; });
}

}  // namespace bench::eigen
