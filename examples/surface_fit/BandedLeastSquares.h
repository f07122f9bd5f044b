// Least squares whose equations have few unknowns, close together, by orthogonal transformations in
// the memory of the unknowns.
//
// The unknowns come in blocks of one width, and an equation has unknowns of four consecutive blocks
// only, as a spline of order four has at any place. Equations are added in the order of their first
// block. Triangular factors then have a band of four blocks. Source: C. L. Lawson, R. J. Hanson,
// Solving Least Squares Problems, Prentice-Hall 1974, chapter 27.
#pragma once

#include <vector>

#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/Owned.h>

namespace surfacefit {

/// The number of blocks of unknowns that an equation has.
inline constexpr int kBandBlocks = 4;

/// Makes a triangular factor of equations, block after block.
///
/// An equation is a row of `columns()` numbers: the coefficients of four blocks of unknowns, the
/// current one and the three after it, then the right-hand side.
class BandedQr {
 public:
  explicit BandedQr(int width);

  int width() const { return width_; }
  int columns() const { return kBandBlocks * width_ + 1; }

  /// Adds equations. Memory: twice theirs, while the function runs.
  void add(const DoubleGenMat& equations);

  /// Takes the equations out that tell the unknowns of the current block, and goes on to the next
  /// block. They are the rows of the triangular factor for that block: at most `width()`, row i
  /// with zeros before column i. There are fewer where there were too few equations.
  DoubleGenMat next();

 private:
  int width_;
  int rows_ = 0;        // of front_ in use
  DoubleGenMat front_;  // upper triangular, kBandBlocks * width_ by columns()
};

/// The triangular factor R of a least-squares problem and its right-hand side z: |R x - z| is least
/// where the misfit of all equations is.
///
/// Vectors have `length()` elements: three blocks more than there are unknowns, which are 0.
class BandedTriangle {
 public:
  explicit BandedTriangle(int width) : width_(width) {}

  /// The rows of the next block, as BandedQr::next gives them.
  void append(const DoubleGenMat& rows);

  int unknowns() const { return blocks() * width_; }
  int length() const { return (blocks() + kBandBlocks - 1) * width_; }

  DoubleVec rightSide() const;
  DoubleVec times(const DoubleVec& x) const;
  DoubleVec transposeTimes(const DoubleVec& y) const;

  /// The root of the mean square of the columns of R, which are as long as those of the equations.
  double meanColumn() const;
  double smallestDiagonal() const;

  /// x with R x = y, and with Rᵀ x = y. R has no 0 on its diagonal.
  DoubleVec solve(const DoubleVec& y) const;
  DoubleVec solveTransposed(const DoubleVec& y) const;
  /// The smallest singular value of R, or somewhat more, by inverse iteration. R has no 0 on its
  /// diagonal. Cost: eight solutions.
  double smallestSingularValue() const;
  /// The diagonal of the inverse of RᵀR, without the zeros at the end. R has no 0 on its diagonal.
  /// Source: K. Takahashi, J. Fagan, M. Chen, Formation of a sparse bus impedance matrix, 8th PICA
  /// Conference (1973), here for blocks. Cost: less than that of making R.
  DoubleVec inverseGramDiagonal() const;

  /// The factor of the same equations and of one more for each unknown: `weight` times it is 0.
  BandedTriangle damped(double weight) const;

 private:
  int blocks() const { return static_cast<int>(rows_.size()); }
  DoubleGenMat diagonalBlock(int block) const;
  DoubleGenMat rightBlocks(int block) const;
  DoubleVec part(const DoubleVec& x, int block, int count) const;

  int width_;
  std::vector<vxKilnBase::Owned<DoubleGenMat>> rows_;  // width_ by kBandBlocks * width_ + 1
};

/// The solution of a least-squares problem.
struct BandedSolution {
  DoubleVec x;     ///< The unknowns.
  int determined;  ///< How many of them the equations determine.
};

/// The x for which |R x - z| is least, if the equations determine it: if no singular value of R is
/// below `tolerance` times the mean column.
///
/// Otherwise x is damped. Combinations of unknowns with singular values well below `damping` times
/// the mean column are next to 0, those well above it as the equations want them. Unknowns that
/// occur in no equation are exactly 0. Such an x depends smoothly on the equations. An unknown
/// counts as determined when the equations have more say in it than a damping by `tolerance` would
/// have. Source: iterated Tikhonov regularisation; H. W. Engl, M. Hanke, A. Neubauer,
/// Regularization of Inverse Problems, Kluwer 1996, chapter 5.
BandedSolution solveLeastSquares(const BandedTriangle& triangle, double tolerance, double damping);

}  // namespace surfacefit
