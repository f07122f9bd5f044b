// Grids of points of a fixed number of doubles, such as the control net of a surface.
#pragma once

#include <iosfwd>
#include <utility>

#include <kilnbase/auto/containers/TtupleVector.h>
#include <kilnbase/export.h>
#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/DoubleVec.h>
#include <kilnbase/linalg/IntVec.h>

/// A grid of points, each a tuple of `size()` doubles, column by column in one vector: the point in
/// row r and column c begins at element (c * rows() + r) * size().
///
///     TtupleMatrix net(3, 2, 4, 0.0);            // two rows of four points in space
///     net(1, 2) = DoubleVec(3, 1.0, 1.0);        // 1 2 3
///     net.component(2)(0, 0) = 9.0;              // the third component of the first point
///     TtupleVector curve = net.rowVector(1);     // a copy of four points
///     double longest = maxValue(net.vecLen());   // 9
///
/// As with vectors, **copy construction shares** the elements and **assignment copies** them;
/// `copy` makes an independent grid. Points and components are views: writing through them changes
/// the grid. Rows, columns and grids of some of them are new. Containers hold
/// `Owned<TtupleMatrix>`.
///
/// A row or column that is not there is fatal where it is checked: it is reported (`rptError`) and
/// the process aborts. Indices of components are the caller's duty; where one is wrong, what would
/// be read is empty and what would be written is left alone.
class KILNBASE_API TtupleMatrix {
 public:
  /// No points, of size 0.
  TtupleMatrix() = default;
  /// A size below 1 is raised to 1, numbers of rows and columns below 0 to 0. More elements than an
  /// int counts raise kOutOfMemoryError and give no columns.
  TtupleMatrix(int size, int rows, int cols, double value);
  /// Shares the elements of `data`; those beyond the grid are left alone. When they are too few,
  /// raises kVectorLengthsError and has as many whole columns as there are.
  TtupleMatrix(int size, int rows, int cols, const DoubleVec& data);
  /// Shares the elements of `other`.
  TtupleMatrix(const TtupleMatrix& other) = default;
  /// Takes over the elements of `other`, which has no points afterwards and takes any assignment.
  TtupleMatrix(TtupleMatrix&& other) noexcept
      : size_(std::exchange(other.size_, 0)),
        rows_(std::exchange(other.rows_, 0)),
        cols_(std::exchange(other.cols_, 0)),
        data_(std::move(other.data_)) {}
  ~TtupleMatrix() = default;

  /// Copies the points: to where this grid views its own when both are of one size, with as many
  /// rows, columns and elements; otherwise to new storage.
  TtupleMatrix& operator=(const TtupleMatrix& other);
  /// The same; but a grid whose elements were moved away takes those of `other` over.
  TtupleMatrix& operator=(TtupleMatrix&& other);
  /// Shares the elements of `other`, whatever its size.
  void reference(const TtupleMatrix& other);
  /// Gives this grid storage of its own, unless nobody shares it.
  void deepenShallowCopy();
  /// An independent grid of the same points.
  [[nodiscard]] TtupleMatrix copy() const;

  /// Doubles in a point.
  int size() const { return size_; }
  /// The number of rows and columns of points.
  int rows() const { return rows_; }
  int cols() const { return cols_; }
  /// The elements of all points. A vector that is copied from this one shares them.
  const DoubleVec& data() const { return data_; }

  /// Point (r, c) as a view of its elements, not checked.
  [[nodiscard]] DoubleVec point(int r, int c) const {
    return data_.slice((c * rows_ + r) * size_, static_cast<unsigned>(size_));
  }
  /// Point (r, c), checked.
  DoubleVec operator()(int r, int c) const {
    boundsCheck(r, c);
    return point(r, c);
  }
  /// Unless 0 <= r < rows(), reports "bad row", then, unless 0 <= c < cols(), "bad column", and
  /// aborts.
  void boundsCheck(int r, int c) const;

  /// The elements of the points of one row or column, checked, as a new vector.
  [[nodiscard]] DoubleVec row(int r) const { return rowVector(r).data(); }
  [[nodiscard]] DoubleVec column(int c) const { return columnVector(c).data(); }
  /// The points of one row or column, checked, as a new sequence.
  [[nodiscard]] TtupleVector rowVector(int r) const;
  [[nodiscard]] TtupleVector columnVector(int c) const;
  /// A new grid of the rows or columns named, checked, in that order.
  TtupleMatrix rows(const IntVec& indices) const;
  TtupleMatrix cols(const IntVec& indices) const;

  /// Component k of all points, as a matrix that views the grid.
  [[nodiscard]] DoubleGenMat component(int k) const;
  /// Copies the elements of `values` to component k of the points. Returns 1, or 0 when there is no
  /// such component or `values` is not of rows() rows and cols() columns.
  int setComponent(int k, const DoubleGenMat& values);

  /// The Euclidean length of each point, as a new matrix.
  [[nodiscard]] DoubleGenMat vecLen() const;

  /// A grid has no text or raw form: nothing is written or read, and `readRaw` returns 0.
  void printOn(std::ostream& stream) const;
  void printRaw(std::ostream& stream) const;
  int readRaw(std::istream& stream);

  /// Exchanges the two views.
  friend void swap(TtupleMatrix& a, TtupleMatrix& b) noexcept {
    std::swap(a.size_, b.size_);
    std::swap(a.rows_, b.rows_);
    std::swap(a.cols_, b.cols_);
    swap(a.data_, b.data_);
  }

 protected:
  /// Whether there is such a component, row or column.
  bool correctTuple(int k) const { return k >= 0 && k < size_; }
  bool correctRow(int r) const { return r >= 0 && r < rows_; }
  bool correctCol(int c) const { return c >= 0 && c < cols_; }

 private:
  void checkRow(int r) const;
  void checkCol(int c) const;
  void dropMissingColumns();
  template <class PointAt>
  TtupleMatrix gridOf(int rows, int cols, PointAt pointAt) const;

  int size_ = 0;
  int rows_ = 0;
  int cols_ = 0;
  DoubleVec data_;  // at least size_ * rows_ * cols_ elements
};
