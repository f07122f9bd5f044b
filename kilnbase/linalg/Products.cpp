#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>

#include <kilnbase/linalg/Products.h>
#include <kilnbase/linalg/detail/counts.h>
#include <kilnbase/linalg/detail/errors.h>
#include <kilnbase/linalg/kernels/Kernels.h>

namespace vxKilnBase {

using detail::asInt;
using detail::elementCount;

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

// Scratch for a large product. Without it, or without memory, the product takes the stack.
std::unique_ptr<double[]> scratchFor(unsigned m, unsigned n, unsigned k) {
  if (std::min({m, n, k}) < kernels::tuning::kLeastLarge) return nullptr;
  return std::unique_ptr<double[]>(new (std::nothrow) double[kernels::kProductScratch]);
}

void setProduct(unsigned k, const Factor<double>& a, const Factor<double>& b, GenMat<double>& c) {
  const auto scratch = scratchFor(c.rows(), c.cols(), k);
  kernels::active().dense->product(c.rows(), c.cols(), k, {a.data, a.rowStride, a.columnStride},
                                   {b.data, b.rowStride, b.columnStride}, c.data(), c.rows(),
                                   scratch.get());
}

void setProduct(unsigned k, const Factor<int>& a, const Factor<int>& b, GenMat<int>& c) {
  const auto& dot = kernels::elements<int>().dot;
  for (int j = 0; j < asInt(c.cols()); ++j) {
    for (int i = 0; i < asInt(c.rows()); ++i) {
      c(i, j) = dot(k, a.data + i * a.rowStride, a.columnStride, b.data + j * b.columnStride,
                    b.rowStride);
    }
  }
}

// The m by n product of A and B, summed over the first k columns of A and rows of B.
template <class T>
GenMat<T> multiply(unsigned m, unsigned n, unsigned k, const Factor<T>& a, const Factor<T>& b) {
  GenMat<T> result(m, n);
  if (result.length() != 0) setProduct(k, a, b, result);
  return result;
}

// y += A v for a column-major or row-major A. Portions of v are made contiguous on the stack.
void addPortions(unsigned k, const Factor<double>& a, const Vec<double>& v, Vec<double>& y) {
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

void setProduct(unsigned k, const Factor<double>& a, const Vec<double>& v, Vec<double>& y) {
  const kernels::DenseKernels& dense = *kernels::active().dense;
  const unsigned m = y.length();
  if (a.rowStride != 1 && a.columnStride != 1) {
    dense.product(m, 1, k, {a.data, a.rowStride, a.columnStride}, {v.data(), v.stride(), 0},
                  y.data(), m, nullptr);
  } else if (v.stride() != 1) {
    y = 0.0;
    addPortions(k, a, v, y);
  } else if (a.rowStride == 1) {
    dense.productVector(m, k, a.data, a.columnStride, v.data(), y.data());
  } else {
    dense.productVectorTransposed(k, m, a.data, a.rowStride, v.data(), y.data());
  }
}

void setProduct(unsigned k, const Factor<int>& a, const Vec<int>& v, Vec<int>& y) {
  const auto& dot = kernels::elements<int>().dot;
  for (int i = 0; i < asInt(y.length()); ++i) {
    y(i) = dot(k, a.data + i * a.rowStride, a.columnStride, v.data(), v.stride());
  }
}

// The product of the m by k matrix A and the first k elements of v.
template <class T>
Vec<T> multiply(unsigned m, unsigned k, const Factor<T>& a, const Vec<T>& v) {
  Vec<T> result(m);
  if (m != 0) setProduct(k, a, v, result);
  return result;
}

}  // namespace

template <class T>
GenMat<T> product(const GenMat<T>& a, const GenMat<T>& b) {
  if (a.cols() != b.rows()) {
    detail::raiseMatrixProduct(GenMat<T>::className, a.rows(), a.cols(), b.rows(), b.cols());
  }
  return multiply(a.rows(), b.cols(), std::min(a.cols(), b.rows()), factorOf(a), factorOf(b));
}

template <class T>
GenMat<T> transProduct(const GenMat<T>& a, const GenMat<T>& b) {
  if (a.cols() != b.cols()) {
    detail::raiseMatrixProduct(GenMat<T>::className, a.rows(), a.cols(), b.cols(), b.rows());
  }
  return multiply(a.rows(), b.rows(), std::min(a.cols(), b.cols()), factorOf(a),
                  factorOf(b).transposed());
}

template <class T>
GenMat<T> transposeProduct(const GenMat<T>& a, const GenMat<T>& b) {
  if (a.rows() != b.rows()) {
    detail::raiseMatrixProduct(GenMat<T>::className, a.cols(), a.rows(), b.rows(), b.cols());
  }
  return multiply(a.cols(), b.cols(), std::min(a.rows(), b.rows()), factorOf(a).transposed(),
                  factorOf(b));
}

template <class T>
Vec<T> product(const GenMat<T>& a, const Vec<T>& v) {
  if (a.cols() != v.length()) {
    detail::raiseMatrixVectorProduct(GenMat<T>::className, a.rows(), a.cols(), v.length());
  }
  return multiply(a.rows(), std::min(a.cols(), v.length()), factorOf(a), v);
}

template <class T>
Vec<T> product(const Vec<T>& v, const GenMat<T>& a) {
  if (a.rows() != v.length()) {
    detail::raiseVectorMatrixProduct(v.length(), GenMat<T>::className, a.rows(), a.cols());
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
