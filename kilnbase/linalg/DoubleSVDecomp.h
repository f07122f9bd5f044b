// Singular value decomposition.
#pragma once

#include <kilnbase/linalg/DoubleGenMat.h>

/// The singular value decomposition A = U S Vᵀ of an m by n matrix: U and V orthogonal, S diagonal,
/// its values not negative and in descending order.
///
/// It tells rank, null space and condition reliably, of any matrix; for solving least-squares
/// problems DoubleLeastSqQR is several times faster.
///
///     DoubleSVDecomp svd(a);
///     if (svd.good()) condition = svd.singularValues()(0) / svd.singularValues()(last);
///
/// Which vectors are computed is set for the next `factor`; initially all. The members that return
/// vectors and matrices return views: they keep showing the same decomposition when this object
/// factors another matrix. Copy construction shares the results with the original, **assignment
/// copies elements** between decompositions of the same size. Elements of any magnitude are in
/// order as long as the singular values are in range; one that is infinite or NaN makes the
/// decomposition fail. For one thread at a time.
class KILNBASE_API DoubleSVDecomp {
 public:
  /// Nothing factored: `fail()` is true.
  DoubleSVDecomp() = default;
  /// Factors `a` with all left and the right vectors.
  explicit DoubleSVDecomp(const DoubleGenMat& a) { factor(a); }
  DoubleSVDecomp(const DoubleSVDecomp& other) = default;
  DoubleSVDecomp& operator=(const DoubleSVDecomp& other) = default;
  ~DoubleSVDecomp() = default;

  /// Factors a copy of `a` in place of what was here before. Vectors that are not wanted stay as
  /// they were.
  void factor(const DoubleGenMat& a);

  /// Whether left vectors are wanted, initially all of them; turned on again they are all wanted.
  /// Returns the old setting, 0 or 1.
  int computeLeftVecs(int on);
  /// Whether all m left vectors are wanted, or the first min(m, n); nothing changes while none are.
  /// Returns 1 if all were wanted, otherwise 0.
  int computeAllLeftVecs(int on);
  /// Whether right vectors are wanted, initially so. Returns the old setting, 0 or 1.
  int computeRightVecs(int on);

  /// The min(m, n) singular values.
  DoubleVec singularValues() const { return singularValues_; }
  /// The super-diagonal, of n elements, that the iteration left: 0 unless it failed.
  DoubleVec eValues() const { return e_; }
  /// U: the left vectors as columns, m by m or m by min(m, n).
  DoubleGenMat leftVecs() const { return u_; }
  /// V: the right vectors as columns, n by n.
  DoubleGenMat rightVecs() const { return v_; }

  /// How many singular values were found. They are the last ones: all, when the decomposition is
  /// good.
  int numSVsFound() const { return static_cast<int>(singularValues_.length()) - info_; }
  /// Whether there are no singular values, or not all were found.
  bool fail() const { return singularValues_.length() == 0 || info_ != 0; }
  bool good() const { return !fail(); }

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
