// The general-matrix family: DoubleGenMat and IntGenMat are GenMat<double> and GenMat<int>.
#pragma once

#include <initializer_list>
#include <utility>

#include <kilnbase/linalg/Vec.h>
#include <kilnbase/linalg/detail/ElementwiseMatrix.h>

namespace vxKilnBase {

template <class T>
class GenMatPick;
template <class Packing>
class PackedMat;

/// A dense m by n matrix, column-major over one vector.
///
/// **`a * b` multiplies element by element; `product(a, b)` is the product of linear algebra**
/// (Products.h), also for a matrix and a vector.
///
/// Element (i, j), row i and column j from 0, is element `rows() * j + i` of the data vector. Rows,
/// columns and diagonals are views of the same storage: writing through them changes the matrix. As
/// with vectors, **copy construction shares** the storage and **assignment copies** elements
/// between matrices of the same size; `copy` makes an independent matrix. Containers hold
/// `Owned<DoubleGenMat>`, for the reasons that Vec.h tells.
///
///     DoubleGenMat a(3, 2, 0.0);
///     a(2, 1) = 5.0;
///     a.col(0) = 1.0;                      // the first column
///     DoubleVec y = product(a, a.row(2));  // A times its last row
///
/// Nested braces list rows. A matrix is a range over its elements, column by column as they are
/// stored; `eachRow` and `eachCol` are ranges of views.
///
///     DoubleGenMat a{{1, 2}, {3, 4}, {5, 6}};                      // 3 by 2; a(1, 0) is 3
///     for (DoubleVec row : a.eachRow()) row /= vxKilnBase::sum(row);
///     for (double& x : a.row(1)) x = 0.0;
///     const double largest = *std::ranges::max_element(a);
///
/// Errors are raised by number through MathError.h; when the handler returns, the operation goes on
/// with the access as asked for. More than 2^32 - 1 elements raise kOutOfMemoryError. A matrix, and
/// every view of its storage, is for one thread at a time.
template <class T>
class KILNBASE_API GenMat : public detail::ElementwiseMatrix<GenMat<T>, T> {
  using Base = detail::ElementwiseMatrix<GenMat, T>;

 public:
  /// What messages call this class.
  static constexpr const char* className = VecNames<T>::genMat;

  /// 0 by 0.
  GenMat() = default;
  /// m rows and n columns, not initialised.
  explicit GenMat(unsigned m, unsigned n);
  /// All elements are `value`.
  explicit GenMat(unsigned m, unsigned n, T value);
  /// These rows. Each row that is shorter than the longest raises kVectorLengthsError; when the
  /// handler returns, elements that a row lacks are 0.
  GenMat(std::initializer_list<std::initializer_list<T>> rows);
  /// Copies m * n values, column by column.
  template <std::same_as<T> Value>
  explicit GenMat(const Value* values, unsigned m, unsigned n) : GenMat(m, n) {
    Base::copyFrom(values);
  }
  /// A matrix over the storage of `v`, nothing copied. Raises kMatrixPointsError unless the length
  /// of `v` is m * n.
  explicit GenMat(const Vec<T>& v, unsigned m, unsigned n);
  /// A view of the same elements; nothing is copied.
  GenMat(const GenMat& other) = default;
  /// Takes the view of `other` over. Afterwards `other` is 0 by 0 and takes any assignment.
  GenMat(GenMat&& other) noexcept
      : Base(static_cast<Base&&>(other)),
        ncols_(std::exchange(other.ncols_, 0)),
        nrows_(std::exchange(other.nrows_, 0)) {}
  /// A new matrix of the picked elements.
  GenMat(const GenMatPick<T>&
             pick);  // NOLINT(google-explicit-constructor): a pick is a matrix to callers
  /// A new matrix of the same numbers.
  template <std::same_as<int> Source>
  GenMat(const GenMat<Source>& other)  // NOLINT(google-explicit-constructor)
      requires std::same_as<T, double> : Base(Vec<double>(other)) {
    setSize(other.rows(), other.cols());
  }
  /// A new matrix of all elements of a symmetric or triangular one.
  template <class Packing>
  GenMat(const PackedMat<Packing>& packed)  // NOLINT(google-explicit-constructor)
      requires std::same_as<T, double>;
  ~GenMat() = default;

  /// Copies the elements of `b`. Raises kMatrixSizesError when the sizes differ.
  GenMat& operator=(const GenMat& b);
  /// The same; but a matrix whose view was moved away takes the view of `b` over.
  GenMat& operator=(GenMat&& b);
  /// Copies the picked elements. Raises kMatrixSizesError when the sizes differ.
  template <std::same_as<GenMatPick<T>> Pick>
  GenMat& operator=(const Pick& pick) {
    return *this = GenMat(pick);
  }
  /// Sets every element.
  GenMat& operator=(T value);
  /// Sets every element to 0.
  void zero() { *this = T(0); }

  /// Makes this matrix a view of `other`, of any size.
  void reference(const GenMat& other);
  /// A new matrix with the same elements.
  [[nodiscard]] GenMat copy() const { return withElements(Base::copy()); }
  [[nodiscard]] GenMat deepCopy() const { return copy(); }
  /// Copies the elements into storage of this matrix's own, unless they have it already.
  void deepenShallowCopy() {
    Base::deepenShallowCopy();
    setSize(nrows_, ncols_);
  }
  /// Changes the size. The top left block that the old and the new matrix have in common keeps its
  /// elements; all others are 0.
  void resize(unsigned m, unsigned n);
  /// Changes the size. Another number of elements loses them; the new ones are not initialised.
  void reshape(unsigned m, unsigned n);

  /// The size.
  unsigned rows() const { return nrows_; }
  unsigned cols() const { return ncols_; }

  /// Element (i, j), not checked.
  T& operator()(int i, int j) { return Base::begin_[position(i, j)]; }
  T operator()(int i, int j) const { return Base::begin_[position(i, j)]; }
  T& sub(int i, int j) { return (*this)(i, j); }
  T sub(int i, int j) const { return (*this)(i, j); }
  T& ref(int i, int j) { return (*this)(i, j); }
  T val(int i, int j) const { return (*this)(i, j); }
  /// Sets element (i, j), not checked, and returns the value.
  T set(int i, int j, T value) { return (*this)(i, j) = value; }
  /// Element (i, j). Raises kElementError when the matrix has no such element.
  T& bcref(int i, int j);
  T bcval(int i, int j) const;
  T bcset(int i, int j, T value);

  /// Views of column j, row i and diagonal k (k > 0 above the main one, k < 0 below it), not
  /// checked.
  Vec<T> col(int j) const;
  Vec<T> row(int i) const;
  Vec<T> diagonal(int k = 0) const;
  /// The same views, checked: raise kColumnError, kRowError and kDiagonalError when the matrix has
  /// no such column, row or diagonal. Kept as it is: kDiagonalError tells -k.
  Vec<T> bccol(int j) const;
  Vec<T> bcrow(int i) const;
  Vec<T> bcdiagonal(int k = 0) const;

  /// The rows, and the columns, as a random access range of views. The range views the matrix by
  /// itself, which may be a temporary.
  [[nodiscard]] auto eachRow() const {
    return detail::places(detail::Lines<GenMat, &GenMat::row>(*this), std::ptrdiff_t{nrows_});
  }
  [[nodiscard]] auto eachCol() const {
    return detail::places(detail::Lines<GenMat, &GenMat::col>(*this), std::ptrdiff_t{ncols_});
  }

  /// A view of these rows and columns, in this order. Each index outside the matrix raises
  /// kMatrixPickError.
  [[nodiscard]] GenMatPick<T> matPick(const Vec<int>& rowIndices,
                                      const Vec<int>& columnIndices) const;
  GenMatPick<T> operator()(const Vec<int>& rowIndices, const Vec<int>& columnIndices) const;

  /// A new matrix of f(x) for every element x.
  [[nodiscard]] GenMat apply(T (*f)(T)) const;

  /// Writes "MxN [", the rows, a line each, and "]". Every element takes the field width that the
  /// stream has on entry.
  void printOn(std::ostream& stream) const;
  /// Reads what `printOn` writes, and takes the size that is written. Raises kMatrixElementsError
  /// and leaves the matrix as it was when the text is cut short, or does not have rows times
  /// columns elements.
  void scanFrom(std::istream& stream);

 private:
  friend Base;

  // A view of these elements without a size yet.
  explicit GenMat(const Vec<T>& elements) : Base(elements) {}

  std::ptrdiff_t position(int i, int j) const {
    return (static_cast<std::ptrdiff_t>(nrows_) * j + i) * Base::step_;
  }
  bool hasRow(int i) const { return i >= 0 && static_cast<unsigned>(i) < nrows_; }
  bool hasColumn(int j) const { return j >= 0 && static_cast<unsigned>(j) < ncols_; }
  void elementCheck(int i, int j) const;
  void setSize(unsigned m, unsigned n);
  GenMat withElements(const Vec<T>& elements) const;

  unsigned ncols_ = 0;
  unsigned nrows_ = 0;
};

/// What the compiler names where `*` stands between a matrix and a vector: the product is
/// `product(a, v)` or `product(v, a)`.
struct UseProductInstead {};

/// A vector, and no matrix, which is a vector of its elements.
template <class V>
concept ExactlyAVec = std::same_as<V, Vec<typename V::Element>>;

template <class T, ExactlyAVec V>
UseProductInstead operator*(const GenMat<T>& a, const V& v) = delete;
template <class T, ExactlyAVec V>
UseProductInstead operator*(const V& v, const GenMat<T>& a) = delete;

}  // namespace vxKilnBase
