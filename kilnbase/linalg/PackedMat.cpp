#include <utility>

#include <kilnbase/linalg/PackedMat.h>
#include <kilnbase/linalg/detail/errors.h>
#include <kilnbase/linalg/detail/matrixText.h>
#include <kilnbase/linalg/kernels/Kernels.h>

namespace vxKilnBase {

using detail::asInt;

namespace {

// The number of elements of a triangle of order n with its diagonal.
std::uint64_t triangleSize(unsigned n) {
  return std::uint64_t{n} * (std::uint64_t{n} + 1) / 2;
}

void checkSquare(unsigned m, unsigned n) {
  if (m != n) detail::raiseMatrixNotSquare(m, n);
}

}  // namespace

void TriangularElement::raiseConstantChanged(double value) {
  detail::raiseConstantChanged(0.0, value);
}

// --- Making and rebinding

template <class Packing>
PackedMat<Packing>::PackedMat(unsigned n) : Base(detail::elementCount(triangleSize(n))) {
  setOrder(n);
}

template <class Packing>
PackedMat<Packing>::PackedMat(const Vec<double>& v, unsigned m, unsigned n) : Base(v), n_(n) {
  checkSquare(m, n);
  if (v.length() != triangleSize(n)) detail::raiseMatrixPoints(v.length(), n, n, className);
}

// Takes the order of new storage, 0 where the storage could not be had.
template <class Packing>
void PackedMat<Packing>::setOrder(unsigned n) {
  n_ = Base::length() == triangleSize(n) ? n : 0;
}

template <class Packing>
PackedMat<Packing> PackedMat<Packing>::withElements(const Vec<double>& elements) const {
  PackedMat result(elements);
  result.setOrder(n_);
  return result;
}

template <class Packing>
PackedMat<Packing>& PackedMat<Packing>::operator=(const PackedMat& b) {
  if (Base::isMovedFrom()) {
    reference(b.copy());
    return *this;
  }
  Base::sizeCheck(b);
  Vec<double>::operator=(b);
  return *this;
}

template <class Packing>
PackedMat<Packing>& PackedMat<Packing>::operator=(PackedMat&& b) {
  if (!Base::isMovedFrom()) return *this = b;
  Base::exchange(b);
  std::swap(n_, b.n_);
  return *this;
}

template <class Packing>
PackedMat<Packing>& PackedMat<Packing>::operator=(double value) {
  Vec<double>::operator=(value);
  return *this;
}

template <class Packing>
void PackedMat<Packing>::reference(const PackedMat& other) {
  Base::reference(other);
  n_ = other.n_;
}

template <class Packing>
void PackedMat<Packing>::deepenShallowCopy() {
  Base::deepenShallowCopy();
  setOrder(n_);
}

template <class Packing>
void PackedMat<Packing>::resize(unsigned m, unsigned n) {
  checkSquare(m, n);
  Base::resize(detail::elementCount(triangleSize(n)));
  setOrder(n);
}

template <class Packing>
void PackedMat<Packing>::reshape(unsigned m, unsigned n) {
  checkSquare(m, n);
  Base::reshape(detail::elementCount(triangleSize(n)));
  setOrder(n);
}

// --- Access

template <class Packing>
void PackedMat<Packing>::elementCheck(int i, int j) const {
  const auto inside = [this](int k) { return k >= 0 && static_cast<unsigned>(k) < n_; };
  if (!inside(i) || !inside(j)) detail::raiseElement(i, j, n_, n_);
}

template <class Packing>
void PackedMat<Packing>::raiseCannotChange(int i, int j) {
  detail::raiseFixedElement(i, j, className);
}

template <class Packing>
typename PackedMat<Packing>::Reference PackedMat<Packing>::bcref(int i, int j) {
  elementCheck(i, j);
  return (*this)(i, j);
}

template <class Packing>
double PackedMat<Packing>::bcval(int i, int j) const {
  elementCheck(i, j);
  return (*this)(i, j);
}

template <class Packing>
double PackedMat<Packing>::bcset(int i, int j, double value) {
  elementCheck(i, j);
  return set(i, j, value);
}

template <class Packing>
PackedMat<Packing> PackedMat<Packing>::leadingSubmatrix(int k) const {
  const bool inside = k >= 0 && static_cast<unsigned>(k) <= n_;
  if (!inside) detail::raiseLeadingSubmatrix(static_cast<unsigned>(k), n_);
  PackedMat result(*this);
  result.n_ = inside ? static_cast<unsigned>(k) : (k < 0 ? 0 : n_);
  const auto count = static_cast<unsigned>(triangleSize(result.n_));
  result.Vec<double>::reference(Base::slice(0, count));
  return result;
}

// --- Text

template <class Packing>
void PackedMat<Packing>::printOn(std::ostream& stream) const {
  detail::printMatrix(stream, *this);
}

template <class Packing>
void PackedMat<Packing>::scanFrom(std::istream& stream) {
  unsigned m = 0;
  unsigned n = 0;
  Vec<double> values;
  if (!detail::readMatrix(stream, className, m, n, values)) return;
  checkSquare(m, n);
  if (m != n) return;
  for (int i = 0; i < asInt(n); ++i) {
    for (int j = 0; j < asInt(n); ++j) {
      if (Packing::stores(i, j) || values(i * asInt(n) + j) == 0.0) continue;
      raiseCannotChange(i, j);
      return;
    }
  }
  resize(n, n);
  detail::setRows(*this, values);
}

template class PackedMat<SymmetricPacking>;
template class PackedMat<LowerPacking>;
template class PackedMat<UpperPacking>;

// --- Products

namespace {

// Slice k of the packed elements, k + 1 of them, is row k of a lower and column k of an upper
// triangle. A product either takes the slices as rows, each of which gives one element of the
// result, or as columns, each of which adds to the result; a symmetric matrix is the sum of both.
void addRows(unsigned n, const double* slices, const double* v, double* y) {
  const kernels::DenseKernels& dense = *kernels::active().dense;
  for (std::ptrdiff_t k = 0; k < std::ptrdiff_t{n}; slices += ++k) {
    y[k] += dense.dot(k + 1, slices, v);
  }
}

void addColumns(unsigned n, const double* slices, const double* v, double* y) {
  const kernels::DenseKernels& dense = *kernels::active().dense;
  for (std::ptrdiff_t k = 0; k < std::ptrdiff_t{n}; slices += ++k) {
    dense.axpy(k + 1, v[k], slices, y);
  }
}

void addSymmetric(unsigned n, const double* slices, const double* v, double* y) {
  const kernels::DenseKernels& dense = *kernels::active().dense;
  for (std::ptrdiff_t k = 0; k < std::ptrdiff_t{n}; slices += ++k) {
    dense.axpy(k, v[k], slices, y);
    y[k] += dense.dot(k + 1, slices, v);
  }
}

using Adder = void (*)(unsigned n, const double* slices, const double* v, double* y);

struct Adders {
  Adder matrixFirst;  // A v
  Adder vectorFirst;  // v A
};

constexpr Adders addersOf(SymmetricPacking) {
  return {addSymmetric, addSymmetric};
}
constexpr Adders addersOf(LowerPacking) {
  return {addRows, addColumns};
}
constexpr Adders addersOf(UpperPacking) {
  return {addColumns, addRows};
}

Vec<double> contiguous(const Vec<double>& v) {
  return v.stride() == 1 ? v : v.copy();
}

template <class Packing>
Vec<double> multiply(Adder add, const PackedMat<Packing>& a, const Vec<double>& v) {
  const unsigned n = a.rows();
  Vec<double> whole(v);
  whole.resize(n);
  const Vec<double> factor = contiguous(whole);
  const Vec<double> slices = contiguous(a);
  Vec<double> result(n, 0.0);
  const bool allThere = factor.length() == n && slices.length() == a.length();
  if (allThere && result.length() == n) add(n, slices.data(), factor.data(), result.data());
  return result;
}

}  // namespace

template <class Packing>
Vec<double> product(const PackedMat<Packing>& a, const Vec<double>& v) {
  if (v.length() != a.cols()) {
    detail::raiseMatrixVectorProduct(Packing::className, a.rows(), a.cols(), v.length());
  }
  return multiply(addersOf(Packing()).matrixFirst, a, v);
}

template <class Packing>
Vec<double> product(const Vec<double>& v, const PackedMat<Packing>& a) {
  if (v.length() != a.rows()) {
    detail::raiseVectorMatrixProduct(v.length(), Packing::className, a.rows(), a.cols());
  }
  return multiply(addersOf(Packing()).vectorFirst, a, v);
}

#define KILN_INSTANTIATE_PRODUCTS(Packing)                                     \
  template Vec<double> product(const PackedMat<Packing>&, const Vec<double>&); \
  template Vec<double> product(const Vec<double>&, const PackedMat<Packing>&);
KILN_INSTANTIATE_PRODUCTS(SymmetricPacking)
KILN_INSTANTIATE_PRODUCTS(LowerPacking)
KILN_INSTANTIATE_PRODUCTS(UpperPacking)
#undef KILN_INSTANTIATE_PRODUCTS

// --- From full matrices

namespace {

// The packed matrix of order n whose stored elements are element(i, j).
template <class Packing, class Element>
PackedMat<Packing> packed(unsigned n, Element element) {
  PackedMat<Packing> result(n);
  for (int i = 0; i < asInt(result.rows()); ++i) {
    for (int j = 0; j <= i; ++j) {
      const bool lower = Packing::stores(i, j);
      const int row = lower ? i : j;
      const int column = lower ? j : i;
      result.set(row, column, element(row, column));
    }
  }
  return result;
}

// Element (i, j) of A, where rows that A lacks count as 0.
auto elementOf(const GenMat<double>& a) {
  return [&a](int i, int j) { return i < asInt(a.rows()) ? a(i, j) : 0.0; };
}

}  // namespace

PackedMat<SymmetricPacking> toSymMat(const GenMat<double>& a) {
  const auto element = elementOf(a);
  return packed<SymmetricPacking>(
      a.cols(), [&](int i, int j) { return (element(i, j) + element(j, i)) * 0.5; });
}

PackedMat<LowerPacking> toLowerTriMat(const GenMat<double>& a) {
  return packed<LowerPacking>(a.cols(), elementOf(a));
}

PackedMat<UpperPacking> toUpperTriMat(const GenMat<double>& a) {
  return packed<UpperPacking>(a.cols(), elementOf(a));
}

}  // namespace vxKilnBase
