#include <algorithm>
#include <cctype>
#include <istream>
#include <ostream>

#include <kilnbase/linalg/MathError.h>
#include <kilnbase/linalg/detail/GenMat.h>
#include <kilnbase/linalg/detail/GenMatPick.h>
#include <kilnbase/linalg/kernels/Kernels.h>

namespace vxKilnBase {

namespace {

int asInt(unsigned n) {
  return static_cast<int>(n);
}

// The number of elements of an m by n matrix; more than a vector can have raise the error of
// storage that cannot be had, and count as none.
unsigned elementCount(unsigned m, unsigned n) {
  const std::uint64_t count = std::uint64_t{m} * n;
  if (count <= UINT32_MAX) return static_cast<unsigned>(count);
  raiseMathError(MathErrorRecord{0x3008, 2, 0x901A}, "RWBlock");
  return 0;
}

}  // namespace

// --- Making and rebinding

template <class T>
GenMat<T>::GenMat(unsigned m, unsigned n) : Base(elementCount(m, n)) {
  setSize(m, n);
}

template <class T>
GenMat<T>::GenMat(unsigned m, unsigned n, T value) : Base(elementCount(m, n), value) {
  setSize(m, n);
}

template <class T>
GenMat<T>::GenMat(const Vec<T>& v, unsigned m, unsigned n) : Base(v), ncols_(n), nrows_(m) {
  if (v.length() != std::uint64_t{m} * n) raiseMathError(0x400A, v.length(), m, n, className);
}

template <class T>
GenMat<T>::GenMat(const GenMatPick<T>& pick) : GenMat(pick.rows(), pick.cols()) {
  for (int j = 0; j < asInt(ncols_); ++j) {
    for (int i = 0; i < asInt(nrows_); ++i) (*this)(i, j) = pick(i, j);
  }
}

// Takes the size of new storage, 0 by 0 where the storage could not be had.
template <class T>
void GenMat<T>::setSize(unsigned m, unsigned n) {
  const bool stored = Base::length() == std::uint64_t{m} * n;
  nrows_ = stored ? m : 0;
  ncols_ = stored ? n : 0;
}

// A view of these elements as a matrix.
template <class T>
GenMat<T> GenMat<T>::sized(const Vec<T>& elements, unsigned m, unsigned n) {
  GenMat result(elements);
  result.setSize(m, n);
  return result;
}

template <class T>
GenMat<T>& GenMat<T>::operator=(const GenMat& b) {
  sizeCheck(b);
  Base::operator=(b);
  return *this;
}

template <class T>
GenMat<T>& GenMat<T>::operator=(const GenMatPick<T>& pick) {
  return *this = GenMat(pick);
}

template <class T>
GenMat<T>& GenMat<T>::operator=(T value) {
  Base::operator=(value);
  return *this;
}

template <class T>
void GenMat<T>::reference(const GenMat& other) {
  Base::reference(other);
  nrows_ = other.nrows_;
  ncols_ = other.ncols_;
}

template <class T>
void GenMat<T>::resize(unsigned m, unsigned n) {
  const GenMat old(*this);
  Base::resize(elementCount(m, n));
  setSize(m, n);
  if (nrows_ == old.nrows_) return;
  if (Base::block_ == old.block_) deepenShallowCopy();
  zero();
  const unsigned keptRows = std::min(nrows_, old.nrows_);
  for (int j = 0; j < asInt(std::min(ncols_, old.ncols_)); ++j) {
    col(j).slice(0, keptRows) = old.col(j).slice(0, keptRows);
  }
}

template <class T>
void GenMat<T>::reshape(unsigned m, unsigned n) {
  Base::reshape(elementCount(m, n));
  setSize(m, n);
}

// --- Access

template <class T>
void GenMat<T>::elementCheck(int i, int j) const {
  if (!hasRow(i) || !hasColumn(j)) raiseMathError(0x4005, i, j, nrows_, ncols_);
}

template <class T>
void GenMat<T>::sizeCheck(const GenMat& b) const {
  if (nrows_ == b.nrows_ && ncols_ == b.ncols_) return;
  raiseMathError(0x4004, b.nrows_, b.ncols_, nrows_, ncols_);
}

template <class T>
T& GenMat<T>::bcref(int i, int j) {
  elementCheck(i, j);
  return (*this)(i, j);
}

template <class T>
T GenMat<T>::bcval(int i, int j) const {
  elementCheck(i, j);
  return (*this)(i, j);
}

template <class T>
T GenMat<T>::bcset(int i, int j, T value) {
  elementCheck(i, j);
  return set(i, j, value);
}

template <class T>
Vec<T> GenMat<T>::col(int j) const {
  return Vec<T>(Base::block_, Base::begin_ + position(0, j), nrows_, Base::step_);
}

template <class T>
Vec<T> GenMat<T>::row(int i) const {
  return Base::slice(i, ncols_, asInt(nrows_));
}

template <class T>
Vec<T> GenMat<T>::diagonal(int k) const {
  const auto firstRow = std::max<std::int64_t>(-std::int64_t{k}, 0);
  const auto firstColumn = std::max<std::int64_t>(k, 0);
  const auto length = std::min(nrows_ - firstRow, ncols_ - firstColumn);
  if (length <= 0) return Base::slice(0, 0, asInt(nrows_) + 1);
  T* first = Base::begin_ + position(asInt(static_cast<unsigned>(firstRow)),
                                     asInt(static_cast<unsigned>(firstColumn)));
  return Vec<T>(Base::block_, first, static_cast<unsigned>(length),
                Base::offset(asInt(nrows_) + 1));
}

template <class T>
Vec<T> GenMat<T>::bccol(int j) const {
  if (!hasColumn(j)) raiseMathError(0x4007, j, ncols_);
  return col(j);
}

template <class T>
Vec<T> GenMat<T>::bcrow(int i) const {
  if (!hasRow(i)) raiseMathError(0x4006, i, nrows_);
  return row(i);
}

template <class T>
Vec<T> GenMat<T>::bcdiagonal(int k) const {
  const std::int64_t below = -std::int64_t{k};
  if (k >= std::int64_t{ncols_} || below >= std::int64_t{nrows_}) {
    raiseMathError(0x4008, static_cast<int>(below), className, nrows_, ncols_);
  }
  return diagonal(k);
}

template <class T>
GenMatPick<T> GenMat<T>::matPick(const Vec<int>& rowIndices, const Vec<int>& columnIndices) const {
  return GenMatPick<T>(*this, rowIndices, columnIndices);
}

template <class T>
GenMatPick<T> GenMat<T>::operator()(const Vec<int>& rowIndices,
                                    const Vec<int>& columnIndices) const {
  return matPick(rowIndices, columnIndices);
}

// --- Text

template <class T>
void GenMat<T>::printOn(std::ostream& stream) const {
  const std::streamsize width = stream.width(0);
  stream << nrows_ << 'x' << ncols_ << " [\n";
  for (int i = 0; i < asInt(nrows_); ++i) {
    for (int j = 0; j < asInt(ncols_); ++j) {
      stream.width(width);
      stream << (*this)(i, j) << ' ';
    }
    stream << '\n';
  }
  stream << ']';
}

namespace {

bool digitComesNext(std::istream& stream) {
  return std::isdigit(stream.peek()) != 0;
}

// Reads "MxN" or "M N", whatever stands before it.
void readSize(std::istream& stream, unsigned& m, unsigned& n) {
  while (stream.good() && !digitComesNext(stream)) stream.get();
  stream >> m >> std::ws;
  if (stream.good() && !digitComesNext(stream)) stream.get();
  stream >> n;
}

}  // namespace

template <class T>
void GenMat<T>::scanFrom(std::istream& stream) {
  unsigned m = 0;
  unsigned n = 0;
  readSize(stream, m, n);
  Vec<T> values;
  values.scanFrom(stream);
  if (!stream.good() || values.length() != std::uint64_t{m} * n) {
    raiseMathError(0x4017, values.length(), className, m, n);
    return;
  }
  resize(m, n);
  const T* value = values.data();
  for (int i = 0; i < asInt(nrows_); ++i) {
    for (int j = 0; j < asInt(ncols_); ++j, ++value) {
      if ((*this)(i, j) != *value) (*this)(i, j) = *value;
    }
  }
}

// --- Element by element

template <class T>
GenMat<T> GenMat<T>::apply(T (*f)(T)) const {
  GenMat result = copy();
  std::transform(result.begin_, result.begin_ + result.npts_, result.begin_, f);
  return result;
}

template <class T>
bool GenMat<T>::operator==(const GenMat& b) const {
  return nrows_ == b.nrows_ && ncols_ == b.ncols_ && Base::operator==(b);
}

template <class T>
GenMat<T> GenMat<T>::combine(Operation operation, const GenMat& a, const GenMat& b) {
  a.sizeCheck(b);
  return sized(Base::combine(operation, a, b), a.nrows_, a.ncols_);
}

template <class T>
GenMat<T> GenMat<T>::combine(Operation operation, const GenMat& a, T b) {
  return sized(Base::combine(operation, a, b), a.nrows_, a.ncols_);
}

template <class T>
GenMat<T> GenMat<T>::combine(Operation operation, T a, const GenMat& b) {
  return sized(Base::combine(operation, a, b), b.nrows_, b.ncols_);
}

template <class T>
GenMat<T>& GenMat<T>::update(Operation operation, const GenMat& b) {
  sizeCheck(b);
  Base::update(operation, b);
  return *this;
}

template <class T>
GenMat<T>& GenMat<T>::update(Operation operation, T b) {
  Base::update(operation, b);
  return *this;
}

template class GenMat<double>;
template class GenMat<int>;

// --- Products

namespace {

// A matrix operand: element (i, j) is data[i * rowStride + j * columnStride].
template <class T>
struct Factor {
  const T* data;
  std::ptrdiff_t rowStride;
  std::ptrdiff_t columnStride;

  Factor transposed() const { return {data, columnStride, rowStride}; }
};

template <class T>
Factor<T> factorOf(const GenMat<T>& a) {
  return {a.data(), a.stride(), static_cast<std::ptrdiff_t>(a.rows()) * a.stride()};
}

void setProduct(unsigned k, Factor<double> a, Factor<double> b, GenMat<double>& c) {
  kernels::active().dense->product(c.rows(), c.cols(), k, {a.data, a.rowStride, a.columnStride},
                                   {b.data, b.rowStride, b.columnStride}, c.data(), c.rows());
}

void setProduct(unsigned k, Factor<int> a, Factor<int> b, GenMat<int>& c) {
  const auto& dot = kernels::elements<int>().dot;
  for (int j = 0; j < asInt(c.cols()); ++j) {
    for (int i = 0; i < asInt(c.rows()); ++i) {
      c(i, j) = dot(k, a.data + i * a.rowStride, a.columnStride, b.data + j * b.columnStride,
                    b.rowStride);
    }
  }
}

// The m by n product of two factors with k columns and rows in common.
template <class T>
GenMat<T> multiply(unsigned m, unsigned n, unsigned k, Factor<T> a, Factor<T> b) {
  GenMat<T> result(m, n);
  if (result.length() != 0) setProduct(k, a, b, result);
  return result;
}

// y += A v, the elements of v taken together in portions; A is column-major or row-major.
void addPortions(unsigned k, Factor<double> a, const Vec<double>& v, Vec<double>& y) {
  const kernels::DenseKernels& dense = *kernels::active().dense;
  constexpr unsigned kPortion = 256;
  double portion[kPortion];
  for (unsigned done = 0; done < k; done += kPortion) {
    const unsigned count = std::min(k - done, kPortion);
    for (unsigned i = 0; i < count; ++i) portion[i] = v(asInt(done + i));
    const double* from = a.data + done * a.columnStride;
    if (a.rowStride == 1) {
      dense.gemv(y.length(), count, 1.0, from, a.columnStride, portion, y.data());
    } else {
      dense.gemvTransposed(count, y.length(), 1.0, from, a.rowStride, portion, y.data());
    }
  }
}

void setProduct(unsigned k, Factor<double> a, const Vec<double>& v, Vec<double>& y) {
  const kernels::DenseKernels& dense = *kernels::active().dense;
  const unsigned m = y.length();
  if (a.rowStride != 1 && a.columnStride != 1) {
    dense.product(m, 1, k, {a.data, a.rowStride, a.columnStride}, {v.data(), v.stride(), 0},
                  y.data(), m);
  } else if (v.stride() != 1) {
    y = 0.0;
    addPortions(k, a, v, y);
  } else if (a.rowStride == 1) {
    dense.productVector(m, k, a.data, a.columnStride, v.data(), y.data());
  } else {
    dense.productVectorTransposed(k, m, a.data, a.rowStride, v.data(), y.data());
  }
}

void setProduct(unsigned k, Factor<int> a, const Vec<int>& v, Vec<int>& y) {
  const auto& dot = kernels::elements<int>().dot;
  for (int i = 0; i < asInt(y.length()); ++i) {
    y(i) = dot(k, a.data + i * a.rowStride, a.columnStride, v.data(), v.stride());
  }
}

// The product of an m by k matrix with the first k elements of v.
template <class T>
Vec<T> multiply(unsigned m, unsigned k, Factor<T> a, const Vec<T>& v) {
  Vec<T> result(m);
  if (m != 0) setProduct(k, a, v, result);
  return result;
}

template <class T>
void raiseInner(unsigned aRows, unsigned aColumns, unsigned bRows, unsigned bColumns) {
  raiseMathError(0x4016, GenMat<T>::className, aRows, aColumns, bRows, bColumns);
}

}  // namespace

template <class T>
GenMat<T> product(const GenMat<T>& a, const GenMat<T>& b) {
  if (a.cols() != b.rows()) raiseInner<T>(a.rows(), a.cols(), b.rows(), b.cols());
  return multiply(a.rows(), b.cols(), std::min(a.cols(), b.rows()), factorOf(a), factorOf(b));
}

template <class T>
GenMat<T> transProduct(const GenMat<T>& a, const GenMat<T>& b) {
  if (a.cols() != b.cols()) raiseInner<T>(a.rows(), a.cols(), b.cols(), b.rows());
  return multiply(a.rows(), b.rows(), std::min(a.cols(), b.cols()), factorOf(a),
                  factorOf(b).transposed());
}

template <class T>
GenMat<T> transposeProduct(const GenMat<T>& a, const GenMat<T>& b) {
  if (a.rows() != b.rows()) raiseInner<T>(a.cols(), a.rows(), b.rows(), b.cols());
  return multiply(a.cols(), b.cols(), std::min(a.rows(), b.rows()), factorOf(a).transposed(),
                  factorOf(b));
}

template <class T>
Vec<T> product(const GenMat<T>& a, const Vec<T>& v) {
  if (a.cols() != v.length()) {
    raiseMathError(0x4014, GenMat<T>::className, a.rows(), a.cols(), v.length());
  }
  return multiply(a.rows(), std::min(a.cols(), v.length()), factorOf(a), v);
}

template <class T>
Vec<T> product(const Vec<T>& v, const GenMat<T>& a) {
  if (a.rows() != v.length()) {
    raiseMathError(0x4015, v.length(), GenMat<T>::className, a.rows(), a.cols());
  }
  return multiply(a.cols(), std::min(a.rows(), v.length()), factorOf(a).transposed(), v);
}

template <class T>
GenMat<T> transpose(const GenMat<T>& a) {
  GenMat<T> result(a.cols(), a.rows());
  if (result.length() == 0) return result;
  for (int k = 0; k < asInt(a.cols()); ++k) result.row(k) = a.col(k);
  return result;
}

template <class T>
GenMat<T> kronecker(const GenMat<T>& a, const GenMat<T>& b) {
  GenMat<T> result(elementCount(a.rows(), b.rows()), elementCount(a.cols(), b.cols()));
  if (result.length() == 0) return result;
  const auto& multiply = kernels::elements<T>().multiply;
  T* to = result.data();
  for (int ja = 0; ja < asInt(a.cols()); ++ja) {
    for (int jb = 0; jb < asInt(b.cols()); ++jb) {
      const Vec<T> column = b.col(jb);
      for (int ia = 0; ia < asInt(a.rows()); ++ia, to += b.rows()) {
        const T factor = a(ia, ja);
        multiply(b.rows(), column.data(), column.stride(), &factor, 0, to, 1);
      }
    }
  }
  return result;
}

#define KILN_INSTANTIATE_PRODUCTS(T)                                       \
  template GenMat<T> product(const GenMat<T>&, const GenMat<T>&);          \
  template GenMat<T> transProduct(const GenMat<T>&, const GenMat<T>&);     \
  template GenMat<T> transposeProduct(const GenMat<T>&, const GenMat<T>&); \
  template Vec<T> product(const GenMat<T>&, const Vec<T>&);                \
  template Vec<T> product(const Vec<T>&, const GenMat<T>&);                \
  template GenMat<T> transpose(const GenMat<T>&);                          \
  template GenMat<T> kronecker(const GenMat<T>&, const GenMat<T>&);
KILN_INSTANTIATE_PRODUCTS(double)
KILN_INSTANTIATE_PRODUCTS(int)
#undef KILN_INSTANTIATE_PRODUCTS

}  // namespace vxKilnBase
