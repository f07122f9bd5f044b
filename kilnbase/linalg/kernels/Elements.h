// Element-wise operations, sums and searches on strided vectors of one element type.
#pragma once

#include <cstddef>

#include <kilnbase/linalg/detail/elementTypes.h>

namespace vxKilnBase::kernels {

using Index = std::ptrdiff_t;

template <class T>
struct ElementKernels {
  using Sum = detail::SumOf<T>;

  // out[i] = a[i] op b[i]. An operand with stride 0 is one number for all i. `out` may start at an
  // operand's first element with the same stride, otherwise it overlaps no operand. Integers wrap
  // around; an integer divided by 0 is 0.
  using Binary = void (*)(Index n, const T* a, Index strideA, const T* b, Index strideB, T* out,
                          Index strideOut);
  Binary add;
  Binary subtract;
  Binary multiply;
  Binary divide;

  // Σ a[i] b[i] and Σ a[i].
  Sum (*dot)(Index n, const T* a, Index strideA, const T* b, Index strideB);
  Sum (*sum)(Index n, const T* a, Index stride);

  // The first index of the largest (smallest) element; 0 when element 0 is a NaN. Other NaNs are
  // ignored. n > 0.
  Index (*maxIndex)(Index n, const T* a, Index stride);
  Index (*minIndex)(Index n, const T* a, Index stride);
};

}  // namespace vxKilnBase::kernels
