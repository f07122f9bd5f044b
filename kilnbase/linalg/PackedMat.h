// Square matrices that store one triangle: DoubleSymMat, DoubleLowerTriMat and DoubleUpperTriMat
// are PackedMat<SymmetricPacking>, PackedMat<LowerPacking> and PackedMat<UpperPacking>.
#pragma once

#include <cmath>
#include <cstddef>
#include <type_traits>
#include <utility>

#include <kilnbase/export.h>
#include <kilnbase/linalg/GenMat.h>
#include <kilnbase/linalg/detail/ElementwiseMatrix.h>

namespace vxKilnBase {

/// Element (i, j) of a triangular matrix, to be read and written. Outside the stored triangle it
/// stands for one constant 0: an assignment that would change the constant raises
/// kConstantChangedError and has no effect.
class KILNBASE_API TriangularElement {
 public:
  /// Refers to `element`, or to the constant when `element` is null.
  explicit TriangularElement(double* element) : element_(element) {}
  TriangularElement(const TriangularElement&) = default;

  /// The value of the element.
  operator double() const {  // NOLINT(google-explicit-constructor): reads as the number it is
    return element_ != nullptr ? *element_ : 0.0;
  }
  /// Sets the element.
  TriangularElement& operator=(double value) {
    if (element_ != nullptr) {
      *element_ = value;
    } else if (value != 0.0) {
      raiseConstantChanged(value);
    }
    return *this;
  }
  /// Assigns the value, not the place.
  TriangularElement& operator=(const TriangularElement& other) {
    return *this = static_cast<double>(other);
  }
  /// Changes the element.
  TriangularElement& operator+=(double value) { return *this = *this + value; }
  TriangularElement& operator-=(double value) { return *this = *this - value; }
  TriangularElement& operator*=(double value) { return *this = *this * value; }
  TriangularElement& operator/=(double value) { return *this = *this / value; }

 private:
  static void raiseConstantChanged(double value);

  double* element_;
};

// A packing tells where element (i, j) of an n by n matrix stands among the n(n+1)/2 stored ones.

/// (i, j) and (j, i) are one element. The lower triangle is stored row by row, which is the upper
/// triangle column by column.
struct KILNBASE_API SymmetricPacking {
  /// What messages call the matrix.
  static constexpr const char* className = "DoubleSymMat";
  /// What reads and writes an element.
  using Reference = double&;
  /// Whether element (i, j) is stored, and its place among the stored ones.
  static constexpr bool stores(int, int) { return true; }
  static constexpr std::ptrdiff_t place(std::ptrdiff_t i, std::ptrdiff_t j) {
    return i > j ? (i + 1) * i / 2 + j : (j + 1) * j / 2 + i;
  }
};

/// The lower triangle is stored row by row; elements above the diagonal are 0.
struct KILNBASE_API LowerPacking {
  /// What messages call the matrix.
  static constexpr const char* className = "DoubleLowerTriMat";
  /// What reads and writes an element.
  using Reference = TriangularElement;
  /// Whether element (i, j) is stored, and its place among the stored ones.
  static constexpr bool stores(int i, int j) { return i >= j; }
  static constexpr std::ptrdiff_t place(std::ptrdiff_t i, std::ptrdiff_t j) {
    return (i + 1) * i / 2 + j;
  }
};

/// The upper triangle is stored column by column; elements below the diagonal are 0.
struct KILNBASE_API UpperPacking {
  /// What messages call the matrix.
  static constexpr const char* className = "DoubleUpperTriMat";
  /// What reads and writes an element.
  using Reference = TriangularElement;
  /// Whether element (i, j) is stored, and its place among the stored ones.
  static constexpr bool stores(int i, int j) { return i <= j; }
  static constexpr std::ptrdiff_t place(std::ptrdiff_t i, std::ptrdiff_t j) {
    return (j + 1) * j / 2 + i;
  }
};

/// An n by n matrix of doubles of which one triangle is stored, packed into n(n+1)/2 elements.
///
/// Element (i, j), row i and column j from 0, is element `Packing::place(i, j)` of the data vector,
/// so the leading k by k block is always the first k(k+1)/2 elements. As with DoubleGenMat, **copy
/// construction shares** the storage and **assignment copies** elements between matrices of the
/// same size; `copy` makes an independent matrix. `DoubleGenMat(a)` is the full matrix.
///
///     DoubleSymMat a(2);
///     a(0, 0) = 4.0;
///     a(1, 0) = 1.0;  // and a(0, 1)
///     a(1, 1) = 3.0;
///     const DoubleVec y = product(a, DoubleVec(2, 1.0));  // 5 4
///
/// Lists of numbers make a matrix by name: `toSymMat`, `toLowerTriMat` and `toUpperTriMat` take the
/// rows of the full matrix, the constructor over a vector takes the stored elements. As a range a
/// matrix gives the stored elements.
///
///     DoubleSymMat a = vxKilnBase::toSymMat({{4, 1}, {1, 3}});
///     const int same = a == DoubleSymMat({4, 1, 3}, 2, 2);  // 1
///
/// Errors are raised by number through MathError.h; when the handler returns, the operation goes on
/// with the access as asked for. Arithmetic and `apply` work on the stored elements only, so that a
/// triangular matrix keeps its zeros. More than 2^32 - 1 stored elements raise kOutOfMemoryError.
/// For one thread at a time.
template <class Packing>
class KILNBASE_API PackedMat : public detail::ElementwiseMatrix<PackedMat<Packing>, double> {
  using Base = detail::ElementwiseMatrix<PackedMat, double>;

 public:
  /// What messages call this class.
  static constexpr const char* className = Packing::className;
  /// What reads and writes an element: a plain reference, or for triangular matrices a
  /// TriangularElement.
  using Reference = typename Packing::Reference;

  /// Order 0.
  PackedMat() = default;
  /// Order n, not initialised.
  explicit PackedMat(unsigned n);
  /// A matrix over the storage of `v`, nothing copied. Raises kMatrixNotSquareError when m differs
  /// from n, which then is the order, and kMatrixPointsError unless the length of `v` is n(n+1)/2.
  explicit PackedMat(const Vec<double>& v, unsigned m, unsigned n);
  /// A view of the same elements; nothing is copied.
  PackedMat(const PackedMat& other) = default;
  /// Takes over the view of `other`, which has order 0 afterwards and may be assigned any matrix.
  PackedMat(PackedMat&& other) noexcept
      : Base(static_cast<Base&&>(other)), n_(std::exchange(other.n_, 0)) {}
  ~PackedMat() = default;

  /// Copies the elements of `b`. Raises kMatrixSizesError when the sizes differ.
  PackedMat& operator=(const PackedMat& b);
  PackedMat& operator=(PackedMat&& b);
  /// Sets every stored element.
  PackedMat& operator=(double value);
  /// Sets every stored element to 0.
  void zero() { *this = 0.0; }

  /// Makes this a view of `other`, of any size.
  void reference(const PackedMat& other);
  /// A new matrix with the same elements.
  [[nodiscard]] PackedMat copy() const { return withElements(Base::copy()); }
  [[nodiscard]] PackedMat deepCopy() const { return copy(); }
  /// Gives this matrix storage of its own, unless it is the only view of such storage.
  void deepenShallowCopy();
  /// Changes the order, keeping the elements of the leading block that the old and the new matrix
  /// have in common; all others are 0. Raises kMatrixNotSquareError when m differs from n, which
  /// then is the order.
  void resize(unsigned m, unsigned n);
  /// Changes the order in the same way. The elements are lost, and not initialised, unless the
  /// order stays.
  void reshape(unsigned m, unsigned n);

  /// The order.
  unsigned rows() const { return n_; }
  unsigned cols() const { return n_; }

  /// Element (i, j), not checked.
  Reference operator()(int i, int j) {
    double* element = Base::data() + offset(i, j);
    if constexpr (std::is_reference_v<Reference>) {
      return *element;
    } else {
      return Reference(Packing::stores(i, j) ? element : nullptr);
    }
  }
  double operator()(int i, int j) const {
    return Packing::stores(i, j) ? Base::data()[offset(i, j)] : 0.0;
  }
  Reference ref(int i, int j) { return (*this)(i, j); }
  double val(int i, int j) const { return (*this)(i, j); }
  /// Sets element (i, j) and returns the value. Outside the triangle raises kFixedElementError.
  /// Kept as it is: when the handler returns, the value is stored at `Packing::place(i, j)` all the
  /// same, which is the place of another element.
  double set(int i, int j, double value) {
    if (!Packing::stores(i, j)) raiseCannotChange(i, j);
    return Base::data()[offset(i, j)] = value;
  }
  /// The same; raise kElementError when the element is not in the matrix.
  Reference bcref(int i, int j);
  double bcval(int i, int j) const;
  double bcset(int i, int j, double value);

  /// A view of the first k rows and columns. Raises kLeadingSubmatrixError unless 0 <= k <= n; when
  /// the handler returns, the nearest such k counts.
  [[nodiscard]] PackedMat leadingSubmatrix(int k) const;

  /// A new matrix of f(x) for every stored element x.
  [[nodiscard]] PackedMat apply(double (*f)(double)) const { return withElements(Base::apply(f)); }

  /// Writes the full matrix as DoubleGenMat does.
  void printOn(std::ostream& stream) const;
  /// Reads the text of a full matrix and takes its size; of different numbers for (i, j) and (j, i)
  /// of a symmetric matrix the one below the diagonal counts. Leaves the matrix as it was and
  /// raises kMatrixElementsError when the text is cut short or the number of elements is not that
  /// of the size told, kMatrixNotSquareError when the size is not square, and kFixedElementError
  /// for a number other than 0 outside the triangle.
  void scanFrom(std::istream& stream);

 private:
  friend Base;

  // A view of these elements without an order yet.
  explicit PackedMat(const Vec<double>& elements) : Base(elements) {}

  std::ptrdiff_t offset(int i, int j) const { return Packing::place(i, j) * Base::stride(); }
  PackedMat withElements(const Vec<double>& elements) const;
  void setOrder(unsigned n);
  void elementCheck(int i, int j) const;
  static void raiseCannotChange(int i, int j);

  unsigned n_ = 0;
};

/// A times a column vector, new. Raises kMatrixVectorProductError unless the vector has n elements;
/// when the handler returns, elements that the vector lacks count as 0.
template <class Packing>
[[nodiscard]] KILNBASE_API Vec<double> product(const PackedMat<Packing>& a, const Vec<double>& v);
/// A row vector times A, new. Raises kVectorMatrixProductError in the same way.
template <class Packing>
[[nodiscard]] KILNBASE_API Vec<double> product(const Vec<double>& v, const PackedMat<Packing>& a);
/// A new matrix of the absolute values.
template <class Packing>
[[nodiscard]] PackedMat<Packing> abs(const PackedMat<Packing>& a) {
  return a.apply([](double x) { return std::fabs(x); });
}

/// The symmetric part (A + Aᵀ)/2 of the leading square matrix whose order is the number of columns
/// of A, new. Whether A is symmetric is not asked. Rows that A lacks count as 0, here and below.
[[nodiscard]] KILNBASE_API PackedMat<SymmetricPacking> toSymMat(const GenMat<double>& a);
/// The lower and the upper triangle of the same matrix, new. The other triangle is dropped.
[[nodiscard]] KILNBASE_API PackedMat<LowerPacking> toLowerTriMat(const GenMat<double>& a);
[[nodiscard]] KILNBASE_API PackedMat<UpperPacking> toUpperTriMat(const GenMat<double>& a);

template <class T>
template <class Packing>
GenMat<T>::GenMat(const PackedMat<Packing>& packed) requires std::same_as<T, double>
    : GenMat(packed.rows(), packed.cols()) {
  for (int j = 0; j < static_cast<int>(ncols_); ++j) {
    for (int i = 0; i < static_cast<int>(nrows_); ++i) (*this)(i, j) = packed(i, j);
  }
}

}  // namespace vxKilnBase
