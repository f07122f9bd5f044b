// Eigenvalues and eigenvectors of a symmetric matrix.
#pragma once

#include <utility>

#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/DoubleSymMat.h>

/// The eigendecomposition A = V L Vᵀ of a symmetric matrix: the columns of V are orthonormal
/// eigenvectors, L is diagonal, and its elements, the eigenvalues, are in ascending order.
///
/// It answers what the axes of a cloud of points, of a body's inertia or of a quadric are: the
/// eigenvectors of its matrix. For a matrix of data X whose XᵀX one would form first,
/// DoubleSVDecomp of X is more accurate. docs/decompositions.md compares all decompositions.
///
/// The plane that fits points best has the eigenvector of the least eigenvalue of their covariance
/// matrix as its normal:
///
///     const double points[4][3] = {{0, 0, 1}, {1, 0, 2}, {0, 1, 1}, {1, 1, 2}};  // z = 1 + x
///     DoubleVec centre(3, 0.0), offset(3);
///     for (const auto& point : points) centre += DoubleVec(point, 3) / 4.0;
///     DoubleSymMat covariance(3);
///     covariance.zero();
///     for (const auto& point : points) {
///       offset = DoubleVec(point, 3) - centre;
///       for (int i = 0; i < 3; ++i) {
///         for (int j = 0; j <= i; ++j) covariance(i, j) += offset(i) * offset(j) / 4.0;
///       }
///     }
///     const DoubleSymEig axes(covariance);
///     if (axes.good()) {
///       const DoubleVec normal = axes.eigenVecs().col(0);  // (0.707, 0, -0.707)
///       const double variance = axes.eigenValues()(0);     // of the distances from the plane: 0
///     }
///
/// An eigenvalue has an error of a few rounding errors of the largest one, times n at worst.
/// Eigenvectors are orthogonal to rounding errors. The direction of a vector is as uncertain as the
/// rounding errors of A divided by the distance to the next eigenvalue: of equal eigenvalues, any
/// orthonormal vectors of the space that they span may come out. **The sign** of each vector: of
/// the elements that have at least 0.9 times the largest magnitude, the first one is positive.
///
/// Values only (`computeVecs(0)`) take about 4n³/3 operations, values and vectors 9n³. Beside the
/// results, (n + 5) n elements of memory are taken, with n rounded up to a multiple of 8, and none
/// up to order 16. Elements may have any magnitude as long as the eigenvalues are in range.
///
/// The members that return values and vectors return views, which keep showing the same
/// decomposition when this object factors another matrix. Copy construction shares the results with
/// the original. **Assignment, also from a temporary, copies elements** between decompositions of
/// the same size. Moving takes everything over and leaves an empty object, which may be assigned
/// any other; every way of swapping exchanges everything. For one thread at a time.
class KILNBASE_API DoubleSymEig {
 public:
  /// Nothing factored: `fail()` is true.
  DoubleSymEig() = default;
  /// Factors `a` with all vectors.
  explicit DoubleSymEig(const DoubleSymMat& a) { factor(a); }
  DoubleSymEig(const DoubleSymEig& other) = default;
  /// Takes over `other`, which is empty afterwards and may be assigned any other.
  DoubleSymEig(DoubleSymEig&& other) noexcept = default;
  DoubleSymEig& operator=(const DoubleSymEig& other) = default;
  DoubleSymEig& operator=(DoubleSymEig&& other) = default;
  ~DoubleSymEig() = default;

  friend void swap(DoubleSymEig& a, DoubleSymEig& b) noexcept { std::swap(a, b); }

  /// Decomposes `a`, which stays as it is, and forgets the earlier results. Vectors that are not
  /// wanted stay as they were.
  ///
  /// Raises the warning kEigenvaluesError for an infinite or NaN element; when the handler returns,
  /// `fail()` is true and all results are NaN. Without memory (kOutOfMemoryError) keeps all earlier
  /// results.
  void factor(const DoubleSymMat& a);

  /// Says whether the next `factor` computes vectors, initially 1. Returns the old setting, 0 or 1.
  int computeVecs(int on) { return std::exchange(vectors_, on != 0 ? 1 : 0); }

  /// The n eigenvalues, in ascending order.
  [[nodiscard]] DoubleVec eigenValues() const { return values_; }
  /// V, n by n: column j is the eigenvector of eigenvalue j.
  [[nodiscard]] DoubleGenMat eigenVecs() const { return v_; }

  /// Whether there are no eigenvalues, or they were not found.
  [[nodiscard]] bool fail() const { return values_.length() == 0 || failed_ != 0; }
  [[nodiscard]] bool good() const { return !fail(); }

 private:
  DoubleVec values_;
  DoubleGenMat v_;
  int failed_ = 0;
  int vectors_ = 1;
};
