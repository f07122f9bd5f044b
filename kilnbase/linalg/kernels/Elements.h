// Element-wise operations, reductions and searches on strided vectors of one element type.
#pragma once

#include <cstddef>

#include <kilnbase/linalg/detail/elementTypes.h>

namespace vxKilnBase::kernels {

using Index = std::ptrdiff_t;

template <class T>
struct ElementKernels {
  using Sum = detail::SumOf<T>;

  // out[i] = a[i] op b[i]. An operand with stride 0 is one number for all i. `out` may be one of
  // the operands, but overlaps them in no other way. Integers wrap around; an integer over 0 is 0.
  using Binary = void (*)(Index n, const T* a, Index strideA, const T* b, Index strideB, T* out,
                          Index strideOut);
  Binary add;
  Binary subtract;
  Binary multiply;
  Binary divide;

  // Σ a[i] b[i] and Σ a[i].
  Sum (*dot)(Index n, const T* a, Index strideA, const T* b, Index strideB);
  Sum (*sum)(Index n, const T* a, Index stride);

  // The first index whose element no other exceeds (falls below); element 0 when it is a NaN. n >
  // 0.
  Index (*maxIndex)(Index n, const T* a, Index stride);
  Index (*minIndex)(Index n, const T* a, Index stride);
};

}  // namespace vxKilnBase::kernels
