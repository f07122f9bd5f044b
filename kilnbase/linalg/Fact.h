// Factorizations of square systems: DoubleGenFact is Fact<DoubleGenMat>, DoubleSymFact is
// Fact<DoubleSymMat>.
#pragma once

#include <concepts>
#include <initializer_list>

#include <kilnbase/export.h>
#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/DoubleSymMat.h>
#include <kilnbase/linalg/IntVec.h>

namespace vxKilnBase {

/// A square matrix factored once, to solve A x = b for many b.
///
/// DoubleGenFact is the LU factorization P A = L U with partial pivoting of any square matrix;
/// DoubleSymFact factors a packed symmetric, also indefinite, matrix as U D Uᵀ with diagonal pivots
/// of order 1 and 2, in half the time and storage. The object's own matrix part holds the factors
/// in the layout of LINPACK (LINPACK Users' Guide, SIAM 1979, chapters 1 and 5).
/// `docs/decompositions.md` compares all factorizations.
///
///     DoubleGenMat a(2, 2, 1.0);
///     a(0, 0) = 3.0;
///     const DoubleGenFact lu(a);
///     if (lu.good()) {
///       const DoubleVec x = lu.solve(DoubleVec(2, 4.0));  // 0 4
///     }
///
/// A singular matrix is no error when it is factored: `isSingular` and `fail` tell. Without an
/// estimate of the condition only a pivot that is exactly 0 counts as singular; ask for the
/// estimate where the matrix may be nearly so. Copy construction shares the factors and pivots with
/// the original, **assignment copies elements** between factorizations of the same size. After an
/// assignment between different sizes, whose handler returned, nothing is factored. Errors are
/// raised by number through MathError.h. For one thread at a time.
template <class Matrix>
class KILNBASE_API Fact : public Matrix {
 public:
  /// What messages call this class.
  static constexpr const char* className =
      std::same_as<Matrix, DoubleGenMat> ? "DoubleGenFact" : "DoubleSymFact";

  /// Nothing factored: 0 by 0.
  Fact() = default;
  /// Factors a copy of `a`; see `factor`.
  explicit Fact(const Matrix& a, int estimateCondition = 0) { factor(a, estimateCondition); }
  /// A factorization cannot be factored again.
  Fact(const Fact& factored, int estimateCondition) = delete;
  Fact(const Fact& other) = default;
  /// Takes over what `other` views; `other` may be assigned any factorization afterwards.
  Fact(Fact&& other) noexcept = default;
  Fact& operator=(const Fact& other);
  Fact& operator=(Fact&& other);
  ~Fact() = default;

  /// Factors a copy of `a` in place of what was here before, and with `estimateCondition` not 0
  /// estimates the condition, which costs O(n²) more. Raises kFactorNotSquareError for a matrix
  /// that is not square; when the handler returns, the number of rows is the order, columns beyond
  /// it are dropped and missing ones are 0. Without memory (kOutOfMemoryError) keeps the earlier
  /// factors. An empty matrix keeps the earlier condition.
  void factor(const Matrix& a, int estimateCondition = 0);
  void factor(const Fact& factored, int estimateCondition = 0) = delete;

  /// The pivots of LINPACK, counted from 1, as a new vector.
  [[nodiscard]] IntVec pivots() const { return pvts_.copy(); }

  /// The x of A x = b, new. Raises kRightSideLengthError unless b has n elements, returning an
  /// empty vector, and kNotFactoredError when `fail()`; when the handler returns, x is what
  /// divisions by the zero pivots give.
  [[nodiscard]] DoubleVec solve(const DoubleVec& b) const;
  [[nodiscard]] DoubleVec solve(std::initializer_list<double> b) const {
    return solve(DoubleVec(b));
  }
  /// The X of A X = B: column j solves for column j of B, in much less time than one by one. The
  /// same errors, for the number of rows of B.
  [[nodiscard]] DoubleGenMat solve(const DoubleGenMat& b) const;

  /// The determinant of A; 0 for an empty matrix, infinite or 0 where it overflows or underflows.
  [[nodiscard]] double determinant() const;
  /// A⁻¹, new. Raises kNotFactoredError when `fail()`. To solve systems, `solve` is faster and more
  /// accurate.
  [[nodiscard]] Matrix inverse() const;

  /// The estimate of the **reciprocal** condition number in the 1-norm, between 0 and 1, at or
  /// above the true one. Raises the warning kNoConditionNumberError and gives -1 when it was not
  /// estimated; a zero pivot found without an estimate gives 0. An infinite or NaN element of A
  /// counts as singular when the condition is estimated.
  [[nodiscard]] double condition() const;
  /// Whether the reciprocal condition counts as 0: 1 + condition == 1. One not estimated does not.
  [[nodiscard]] bool isSingular() const { return rcond_ + 1.0 == 1.0; }
  /// Whether nothing can be solved: the matrix is singular or has no rows.
  [[nodiscard]] bool fail() const { return Matrix::rows() == 0 || isSingular(); }
  /// The opposite of `fail`.
  [[nodiscard]] bool good() const { return !fail(); }

 private:
  bool hasFactors() const;
  Matrix contiguousFactors() const;
  template <class RightHandSides>
  RightHandSides solveFor(const RightHandSides& b, unsigned height) const;

  IntVec pvts_;
  double rcond_ = -1.0;
};

}  // namespace vxKilnBase
