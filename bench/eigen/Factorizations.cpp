#include "eigen/Eigen.h"

namespace bench::eigen {

namespace {

using Matrix = Eigen::MatrixXd;

Matrix randomMatrixOf(const Shape& shape) {
  return matrixOf(randomMatrix(shape), shape);
}

Matrix definiteMatrixOf(const Shape& shape) {
  return matrixOf(positiveDefinite(shape.rows), shape);
}

template <class MatrixFor, class Factor, class Read>
void addFactorization(Suite& suite, const std::string& name, MatrixFor matrixFor, Factor factor,
                      Read read, int largest = std::numeric_limits<int>::max()) {
  const auto make = [=](const Shape& shape) {
    return contestant([factor, a = matrixFor(shape)] { return factor(a); }, read);
  };
  suite.addPeer(name, {"Eigen", make, largest});
}

using PivotedQr = Eigen::ColPivHouseholderQR<Matrix>;

Values pivotedResult(const PivotedQr& qr) {
  const auto& indices = qr.colsPermutation().indices();
  return gramTimesRandom(qr.matrixQR().data(), static_cast<int>(qr.rows()),
                         static_cast<int>(qr.cols()),
                         std::vector<int>(indices.data(), indices.data() + indices.size()), 0);
}

Values triangleResult(const Matrix& r) {
  return gramTimesRandom(r.data(), static_cast<int>(r.rows()), static_cast<int>(r.cols()));
}

using Lu = Eigen::PartialPivLU<Matrix>;

Values solution(const Lu& lu) {
  return valuesOf(Eigen::VectorXd(lu.solve(vectorOf(gaussian(static_cast<int>(lu.rows()), 2)))));
}

Lu luWithCondition(const Matrix& a) {
  Lu lu(a);
  benchmark::DoNotOptimize(lu.rcond());
  return lu;
}

Contestant luAndSolve(const Shape& shape) {
  const auto run = [a = randomMatrixOf(shape), b = vectorOf(gaussian(shape.rows, 2))] {
    return Eigen::VectorXd(Lu(a).solve(b));
  };
  return contestant(run, [](const Eigen::VectorXd& x) { return valuesOf(x); });
}

Values inverseTimesVector(const Matrix& inverse) {
  return valuesOf(
      Eigen::VectorXd(inverse * vectorOf(gaussian(static_cast<int>(inverse.rows()), 2))));
}

using Svd = Eigen::BDCSVD<Matrix>;

Values svdResult(const Svd& svd) {
  const auto n = static_cast<int>(svd.cols());
  return spectrumAndProduct(svd.singularValues().data(), {n, n}, svd.matrixU().data(),
                            svd.matrixV().data(), 1, n);
}

using SymmetricEigen = Eigen::SelfAdjointEigenSolver<Matrix>;

Values eigenResult(const SymmetricEigen& eigen) {
  const double* v = eigen.eigenvectors().data();
  const auto n = static_cast<int>(eigen.eigenvalues().size());
  return spectrumAndProduct(eigen.eigenvalues().data(), {n, n}, v, v, 1, n);
}

// Of a size that the compiler knows, for matrices of 3 rows.
Contestant fixedEigen(const Shape& shape, int options) {
  using Fixed = Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>;
  const auto run = [a = Eigen::Matrix3d(matrixOf(symmetricMatrix(shape), shape)), options] {
    return Fixed(a, options);
  };
  return contestant(run, [n = shape.rows, options](const Fixed& eigen) {
    const double* values = eigen.eigenvalues().data();
    if (options == Eigen::EigenvaluesOnly) return Values(values, values + n);
    const double* v = eigen.eigenvectors().data();
    return spectrumAndProduct(values, {n, n}, v, v, 1, n);
  });
}

void addEigenvalues(Suite& suite, const std::string& name, int options) {
  const auto factor = [options](const Matrix& a) { return SymmetricEigen(a, options); };
  const auto matrixFor = [](const Shape& shape) { return matrixOf(symmetricMatrix(shape), shape); };
  addFactorization(suite, name, matrixFor, factor, [options](const SymmetricEigen& eigen) {
    return options == Eigen::EigenvaluesOnly ? valuesOf(Eigen::VectorXd(eigen.eigenvalues()))
                                             : eigenResult(eigen);
  });
  suite.addPeer(name,
                {"Matrix3d", [options](const Shape& s) { return fixedEigen(s, options); }, 3});
}

Contestant leastSquares(const Shape& shape) {
  const auto run = [a = randomMatrixOf(shape), b = vectorOf(gaussian(shape.rows, 2))] {
    return Eigen::VectorXd(PivotedQr(a).solve(b));
  };
  return contestant(run, [](const Eigen::VectorXd& x) { return valuesOf(x); });
}

// Solves by a decomposition of the matrix that `matrixFor` gives for the right-hand sides.
template <class Decomposition>
Maker solveWith(Values (*matrixFor)(const Shape&)) {
  return [=](const Shape& shape) {
    const Values elements = matrixFor(shape);
    const int columns = static_cast<int>(elements.size()) / shape.rows;
    const auto run = [decomposition = Decomposition(matrixOf(elements, {shape.rows, columns})),
                      b = matrixOf(rightHandSides(shape), shape)] {
      return Matrix(decomposition.solve(b));
    };
    return contestant(run, [](const Matrix& x) { return valuesOf(x); });
  };
}

}  // namespace

void addFactorizations(Suite& suite) {
  addFactorization(
      suite, "QR, pivoted", randomMatrixOf, [](const Matrix& a) { return PivotedQr(a); },
      pivotedResult);
  addFactorization(
      suite, "QR, unpivoted", randomMatrixOf,
      [](const Matrix& a) { return Eigen::HouseholderQR<Matrix>(a); },
      [](const Eigen::HouseholderQR<Matrix>& qr) { return triangleResult(qr.matrixQR()); });
  suite.addPeer("least squares, pivoted", {"Eigen", leastSquares});
  addFactorization(
      suite, "Cholesky, unpivoted", definiteMatrixOf,
      [](const Matrix& a) { return Eigen::LLT<Matrix>(a); },
      [](const Eigen::LLT<Matrix>& llt) { return triangleResult(llt.matrixU()); });
  using Cholesky = Eigen::LLT<Matrix, Eigen::Upper>;
  suite.addPeer("Cholesky, right-hand sides", {"Eigen", solveWith<Cholesky>(squareMatrixFor)});
  suite.addPeer("QR, right-hand sides", {"Eigen", solveWith<PivotedQr>(squareMatrixFor)});
  suite.addPeer("least squares, right-hand sides", {"Eigen", solveWith<PivotedQr>(tallMatrixFor)});
  addFactorization(
      suite, "LU", randomMatrixOf, [](const Matrix& a) { return Lu(a); }, solution);
  addFactorization(suite, "LU with condition", randomMatrixOf, luWithCondition, solution);
  suite.addPeer("LU and solve", {"Eigen", luAndSolve});
  addFactorization(
      suite, "LU and inverse", randomMatrixOf, [](const Matrix& a) { return Matrix(a.inverse()); },
      inverseTimesVector);
  constexpr int kLargestSvd = 100;  // beyond it this one is far behind the others
  addFactorization(
      suite, "SVD, all vectors", randomMatrixOf,
      [](const Matrix& a) { return Svd(a, Eigen::ComputeFullU | Eigen::ComputeFullV); }, svdResult,
      kLargestSvd);
  addFactorization(
      suite, "SVD, values only", randomMatrixOf, [](const Matrix& a) { return Svd(a); },
      [](const Svd& svd) { return valuesOf(svd.singularValues()); }, kLargestSvd);
  addEigenvalues(suite, "eigenvalues and vectors", Eigen::ComputeEigenvectors);
  addEigenvalues(suite, "eigenvalues only", Eigen::EigenvaluesOnly);
}

}  // namespace bench::eigen
