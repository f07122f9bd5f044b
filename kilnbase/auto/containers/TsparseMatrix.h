// Sparse matrices, stored column by column.
#pragma once

#include <iosfwd>
#include <utility>
#include <vector>

#include <kilnbase/export.h>
#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/DoubleVec.h>
#include <kilnbase/linalg/IntVec.h>

/// A sparse matrix of doubles, built by appending whole columns.
///
///     TsparseMatrix a(3, 2);  // room for two columns
///     a.rows() = 3;           // appending leaves the number of rows alone
///     const int rows[] = {2, 0};
///     const double values[] = {5.0, 7.0};
///     a.addCol(IntVec(rows, 2), DoubleVec(values, 2), 0);
///     a.addCol(DoubleVec(3, 1.0), 0);                // a dense column
///     double x = a(0, 0);                            // 7
///     double y = a(1, 0);                            // 0: not stored
///     DoubleVec sums = product(a, DoubleVec(2, 1.0));  // 8 1 6
///
/// Column c stores `counts()(c)` elements from position `beginnings()(c)` on: their rows stand in
/// `indices()`, in the order in which they were given, their values in `data()`. Rows are not
/// checked: an element whose row is not in [0, `rows()`) is stored and read by `storedCol` alone.
/// Of elements of one row in one column, the first one counts. What is not stored reads as 0.
///
/// **Copy construction shares the storage**, as `reference` does: what `setElement` changes, or a
/// write through the vectors, shows in both matrices. A matrix that appends or removes takes
/// storage of its own first when a copy or a vector shares it, so that no copy loses a column;
/// vectors taken before then view the old storage. Assignment copies.
///
/// Nothing here reads or writes outside the storage, whatever is written to `rows()`, `cols()` or
/// the vectors. A failed operation returns 0 and changes nothing. Capacities below 0 count as 0. A
/// matrix whose storage could not be had (kOutOfMemoryError) is empty.
class KILNBASE_API TsparseMatrix {
 public:
  /// No rows, no columns, no room.
  TsparseMatrix() = default;
  /// No rows and columns, with room for `maxCols` columns and maxRows * maxCols elements. When no
  /// int holds that product there is no room for elements, and appending must grow.
  TsparseMatrix(int maxRows, int maxCols);
  TsparseMatrix(int maxRows, int maxCols, int maxElements);
  /// The elements of `dense` that are not 0, with no room for more.
  TsparseMatrix(const DoubleGenMat& dense);  // NOLINT(google-explicit-constructor)
  /// Shares the storage of `other`.
  TsparseMatrix(const TsparseMatrix& other) = default;
  /// Takes the storage of `other` over. Afterwards `other` is empty and takes any assignment.
  TsparseMatrix(TsparseMatrix&& other) noexcept;
  ~TsparseMatrix() = default;

  /// Copies everything, capacities included, into storage of its own.
  TsparseMatrix& operator=(const TsparseMatrix& other);
  /// The same; but a matrix whose storage was moved away takes that of `other` over.
  TsparseMatrix& operator=(TsparseMatrix&& other);
  /// Shares the storage of `other`.
  void reference(const TsparseMatrix& other);
  /// Gives this matrix storage of its own, unless nobody shares it.
  void deepenShallowCopy();

  /// The number of rows in use.
  int rows() const { return rows_; }
  /// The number of rows in use: what is stored below them reads as 0.
  int& rows() { return rows_; }
  /// The number of columns.
  int cols() const { return cols_; }
  /// The number of columns, the place of the next one appended. Smaller values hide the last
  /// columns, but not their elements, which still take room.
  int& cols() { return cols_; }
  /// The number of elements stored, and how many rows, columns and elements there is room for.
  int numberOfElements() const { return numberOfElements_; }
  int maxNumberOfRows() const { return maxNumberOfRows_; }
  int maxNumberOfCols() const { return maxNumberOfCols_; }
  int maxNumberOfElements() const { return maxNumberOfElements_; }

  /// Views of the storage, as long as the capacity.
  IntVec beginnings() const { return beginnings_; }
  IntVec counts() const { return counts_; }
  IntVec indices() const { return indices_; }
  DoubleVec data() const { return data_; }

  /// Element (r, c), searched for along the column; 0 when it is not stored or not in the matrix.
  [[nodiscard]] double element(int r, int c) const;
  double operator()(int r, int c) const { return element(r, c); }
  /// Changes a stored element. Returns 1, or 0 when element (r, c) is not stored.
  int setElement(int r, int c, double v);

  /// Row r and column c as new, dense vectors of `cols()` and `rows()` elements; all 0 when there
  /// is no such row or column.
  [[nodiscard]] DoubleVec row(int r) const;
  [[nodiscard]] DoubleVec col(int c) const;
  /// Makes the vectors new ones that hold the values and rows that column c stores. Returns 1, or 0
  /// when there is no such column.
  int storedCol(int c, DoubleVec& values, IntVec& rows) const;
  /// A new dense matrix of the same elements.
  [[nodiscard]] DoubleGenMat convert() const;

  /// Appends a column of these elements. Returns 1, or 0 when there are none or the lengths differ.
  ///
  /// All that append leave `rows()` alone. Where the capacity is used up they return 0 if `grow` is
  /// 0; otherwise the capacity grows to exactly what is needed, so that filling a matrix column by
  /// column takes quadratic time unless its capacity is known.
  int addCol(const IntVec& rowIndices, const DoubleVec& values, int grow);
  /// Appends a dense column; zeros are not stored.
  int addCol(const DoubleVec& column, int grow);
  /// Appends the columns of another matrix, all or none. The other one may be this one.
  int add(const TsparseMatrix& other, int grow);
  int add(const DoubleGenMat& dense, int grow);
  /// Makes the matrix `dense`, with the capacity of TsparseMatrix(maxRows, maxCols) or what `dense`
  /// needs, whichever is larger. Returns 1, or 0 when there is no memory.
  int set(const DoubleGenMat& dense, int maxRows, int maxCols);

  /// Raises the capacity to at least this. It never shrinks. Gives this matrix storage of its own;
  /// without memory nothing changes.
  void resizeMax(int maxRows, int maxCols);
  void resizeMax(int maxRows, int maxCols, int maxElements);

  /// Removes columns, all or none, given in any order; one that is given twice is removed once.
  /// Returns 1, or 0 when one of them is not there. The capacity stays.
  int removeCol(int c);
  int removeCols(const IntVec& columns);
  /// Removes all other columns. Those kept stay in their order.
  int keepCols(const IntVec& columns);
  /// Removes the stored elements whose value is 0; the others stay in their order.
  void removeZeros();

  /// A sparse matrix has no text form: nothing is written.
  void printOn(std::ostream& stream) const;

  /// Exchanges the two matrices and what they share.
  friend KILNBASE_API void swap(TsparseMatrix& a, TsparseMatrix& b) noexcept;

 private:
  friend KILNBASE_API DoubleVec product(const TsparseMatrix& a, const DoubleVec& v);
  friend KILNBASE_API DoubleVec product(const DoubleVec& v, const TsparseMatrix& a);
  class Columns;

  // Positions in `indices_` and `data_`.
  struct Span {
    int first;
    int count;
  };
  Span span(int c) const;
  int storedCols() const;
  int position(int r, int c) const;
  void scatter(int c, DoubleVec& column) const;

  void emptyUnlessStored();
  bool isDeep() const;
  bool hasCapacity(int cols, int elements) const;
  bool growTo(int maxRows, int maxCols, int maxElements);
  bool makeRoom(long long columns, long long elements, int grow);
  void append(const IntVec& rowIndices, const DoubleVec& values);
  void append(const DoubleVec& column);
  void appendElement(int row, double value);
  void endColumn(int beginning);
  int keepOrRemove(const IntVec& columns, bool keepsNamed);
  int reduceTo(const std::vector<bool>& keptColumns, bool keepsZeros);

  int rows_ = 0;
  int cols_ = 0;
  int numberOfElements_ = 0;
  int maxNumberOfRows_ = 0;
  int maxNumberOfCols_ = 0;
  int maxNumberOfElements_ = 0;
  IntVec beginnings_;  // of each column, as the counts; 0 where there is none yet
  IntVec counts_;
  IntVec indices_;  // of each element; all four are of stride 1, and as long as their capacity
  DoubleVec data_;
};

/// A times a column vector, new. Takes time in proportion to what is stored. Raises
/// kMatrixVectorProductError on a mismatch; when the handler returns, the product is taken over the
/// columns and elements that both have.
[[nodiscard]] KILNBASE_API DoubleVec product(const TsparseMatrix& a, const DoubleVec& v);
/// A row vector times A, which is A transposed times the vector. Raises kVectorMatrixProductError
/// on a mismatch.
[[nodiscard]] KILNBASE_API DoubleVec product(const DoubleVec& v, const TsparseMatrix& a);
