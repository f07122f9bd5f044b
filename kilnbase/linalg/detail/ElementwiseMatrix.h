// The arithmetic that all matrices over one data vector share.
#pragma once

#include <iosfwd>

#include <kilnbase/export.h>
#include <kilnbase/linalg/Vec.h>

namespace vxKilnBase::detail {

/// Raises kMatrixSizesError.
KILNBASE_API void raiseSizesDiffer(unsigned bRows, unsigned bCols, unsigned rows, unsigned cols);

/// The base of `Matrix`, which tells `rows()` and `cols()`, makes a matrix of its own size over
/// other elements (`withElements`), prints and reads itself.
template <class Matrix, class T>
class ElementwiseMatrix : public Vec<T> {
 public:
  /// A view of all stored elements.
  Vec<T> dataVec() const { return *this; }

  /// Element by element, over the stored elements. Matrices of different sizes raise
  /// kMatrixSizesError.
  Matrix& operator+=(const Matrix& b) { return changed(elements() += checked(b)); }
  Matrix& operator-=(const Matrix& b) { return changed(elements() -= checked(b)); }
  Matrix& operator*=(const Matrix& b) { return changed(elements() *= checked(b)); }
  Matrix& operator/=(const Matrix& b) { return changed(elements() /= checked(b)); }
  Matrix& operator+=(T x) { return changed(elements() += x); }
  Matrix& operator-=(T x) { return changed(elements() -= x); }
  Matrix& operator*=(T x) { return changed(elements() *= x); }
  Matrix& operator/=(T x) { return changed(elements() /= x); }
  Matrix& operator++() { return changed(++elements()); }
  Matrix& operator--() { return changed(--elements()); }

  /// Matrices of different sizes are unequal.
  friend bool operator==(const Matrix& a, const Matrix& b) {
    return a.sameSize(b) && a.elements() == b.elements();
  }

  /// Element by element, over the stored elements; the result is a new matrix.
  friend Matrix operator+(const Matrix& a, const Matrix& b) {
    return a.made(a.elements() + a.checked(b));
  }
  friend Matrix operator-(const Matrix& a, const Matrix& b) {
    return a.made(a.elements() - a.checked(b));
  }
  friend Matrix operator*(const Matrix& a, const Matrix& b) {
    return a.made(a.elements() * a.checked(b));
  }
  friend Matrix operator/(const Matrix& a, const Matrix& b) {
    return a.made(a.elements() / a.checked(b));
  }
  friend Matrix operator+(const Matrix& a, T x) { return a.made(a.elements() + x); }
  friend Matrix operator-(const Matrix& a, T x) { return a.made(a.elements() - x); }
  friend Matrix operator*(const Matrix& a, T x) { return a.made(a.elements() * x); }
  friend Matrix operator/(const Matrix& a, T x) { return a.made(a.elements() / x); }
  friend Matrix operator+(T x, const Matrix& a) { return a.made(x + a.elements()); }
  friend Matrix operator-(T x, const Matrix& a) { return a.made(x - a.elements()); }
  friend Matrix operator*(T x, const Matrix& a) { return a.made(x * a.elements()); }
  friend Matrix operator/(T x, const Matrix& a) { return a.made(x / a.elements()); }
  friend Matrix operator-(const Matrix& a) { return a.made(-a.elements()); }
  friend Matrix operator+(const Matrix& a) { return a.copy(); }

  /// As `printOn` and `scanFrom`.
  friend std::ostream& operator<<(std::ostream& stream, const Matrix& a) {
    a.printOn(stream);
    return stream;
  }
  friend std::istream& operator>>(std::istream& stream, Matrix& a) {
    a.scanFrom(stream);
    return stream;
  }

 protected:
  /// The stored elements as a vector.
  Vec<T>& elements() { return *this; }
  const Vec<T>& elements() const { return *this; }

  /// Whether the number of rows and that of columns are the same.
  bool sameSize(const Matrix& b) const {
    return self().rows() == b.rows() && self().cols() == b.cols();
  }
  /// Raises kMatrixSizesError unless they are.
  void sizeCheck(const Matrix& b) const {
    if (!sameSize(b)) raiseSizesDiffer(b.rows(), b.cols(), self().rows(), self().cols());
  }
  /// A matrix of this size over these elements.
  Matrix made(const Vec<T>& elements) const { return self().withElements(elements); }

 private:
  friend Matrix;
  using Vec<T>::Vec;
  ElementwiseMatrix() = default;
  explicit ElementwiseMatrix(const Vec<T>& elements) : Vec<T>(elements) {}

  Matrix& changed(Vec<T>&) { return static_cast<Matrix&>(*this); }
  const Matrix& self() const { return static_cast<const Matrix&>(*this); }
  const Vec<T>& checked(const Matrix& b) const {
    sizeCheck(b);
    return b;
  }
};

}  // namespace vxKilnBase::detail
