// Singular value decomposition.
#pragma once

#include <utility>

#include <kilnbase/linalg/DoubleGenMat.h>

/// The singular value decomposition A = U S Vᵀ of an m by n matrix: U and V are orthogonal, S is
/// diagonal, and its elements, the singular values, are not negative and in descending order.
///
/// It tells rank, null space and condition of any matrix reliably. For least-squares problems
/// DoubleLeastSqQR is several times faster. docs/decompositions.md compares all decompositions.
///
///     DoubleGenMat a(3, 2, 1.0);
///     a(0, 1) = 1.001;
///     const DoubleSVDecomp svd(a);
///     if (svd.good()) {
///       const DoubleVec shortened = svd.rightVecs().col(1);  // what A shortens most
///       const DoubleVec values = svd.singularValues();       // condition: values(0) / values(1)
///     }
///
/// Where rows are at least 1.6 times the columns, the columns are sorted by their norms and reduced
/// to a triangle first: least squares solved by U, S and V are then about as accurate as by QR,
/// also with large residuals.
///
/// **Badly scaled columns**: where norms of columns differ by many orders, the small singular
/// values and their vectors may lose as many digits. Scale the columns to equal norms, or use
/// DoubleLeastSqQR, which does not depend on their scale.
///
/// Which vectors are computed is set for the next `factor`; initially all. Elements of A may have
/// any magnitude as long as the singular values are in range. An infinite or NaN element makes the
/// decomposition fail.
///
/// The members that return vectors and matrices return views, which keep showing the same
/// decomposition when this object factors another matrix. Copy construction shares the results with
/// the original. **Assignment, also from a temporary, copies elements** between decompositions of
/// the same size. Moving takes everything over and leaves an empty object, which may be assigned
/// any other; every way of swapping exchanges everything. For one thread at a time.
class KILNBASE_API DoubleSVDecomp {
 public:
  /// Nothing factored: `fail()` is true.
  DoubleSVDecomp() = default;
  /// Factors `a` with all left and right vectors.
  explicit DoubleSVDecomp(const DoubleGenMat& a) { factor(a); }
  DoubleSVDecomp(const DoubleSVDecomp& other) = default;
  /// Takes over `other`, which is empty afterwards and may be assigned any other.
  DoubleSVDecomp(DoubleSVDecomp&& other) noexcept = default;
  DoubleSVDecomp& operator=(const DoubleSVDecomp& other) = default;
  DoubleSVDecomp& operator=(DoubleSVDecomp&& other) = default;
  ~DoubleSVDecomp() = default;

  /// Exchanges the two decompositions.
  friend void swap(DoubleSVDecomp& a, DoubleSVDecomp& b) noexcept { std::swap(a, b); }

  /// Factors a copy of `a` and forgets the earlier results. Vectors that are not wanted stay as
  /// they were. Without memory (kOutOfMemoryError) keeps all earlier results. Takes memory for a
  /// second copy of `a`, and for another n by n + 1 elements where rows are at least 1.6 times the
  /// columns.
  void factor(const DoubleGenMat& a);

  /// Says whether the next `factor` computes left vectors: initially all of them, and all of them
  /// again when they are turned on again. Returns the old setting, 0 or 1.
  int computeLeftVecs(int on);
  /// Says whether the next `factor` computes all m left vectors or the first min(m, n). Changes
  /// nothing while none are wanted. Returns 1 if all were wanted, otherwise 0.
  int computeAllLeftVecs(int on);
  /// Says whether the next `factor` computes right vectors, initially 1. Returns the old setting, 0
  /// or 1.
  int computeRightVecs(int on);

  /// The min(m, n) singular values.
  [[nodiscard]] DoubleVec singularValues() const { return singularValues_; }
  /// The super-diagonal, of n elements, that the iteration left. It is 0 unless the iteration
  /// failed.
  [[nodiscard]] DoubleVec eValues() const { return e_; }
  /// U: the left vectors as columns, m by m or m by min(m, n).
  [[nodiscard]] DoubleGenMat leftVecs() const { return u_; }
  /// V: the right vectors as columns, n by n.
  [[nodiscard]] DoubleGenMat rightVecs() const { return v_; }

  /// How many singular values were found: all when the decomposition is good, otherwise the last
  /// ones.
  [[nodiscard]] int numSVsFound() const {
    return static_cast<int>(singularValues_.length()) - info_;
  }
  /// Whether there are no singular values, or not all were found.
  [[nodiscard]] bool fail() const { return singularValues_.length() == 0 || info_ != 0; }
  [[nodiscard]] bool good() const { return !fail(); }

 private:
  int leftDigit() const { return job_ / 10; }
  int rightDigit() const { return job_ % 10; }
  void setJob(int left, int right) { job_ = 10 * left + right; }

  DoubleVec singularValues_;
  DoubleVec e_;
  DoubleGenMat u_;
  DoubleGenMat v_;
  int info_ = 0;  // the number of the last value that was not found
  int job_ = 11;  // which vectors are wanted; see linpack::dsvdc
};
