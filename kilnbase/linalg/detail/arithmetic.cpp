#include <algorithm>
#include <concepts>

#include <kilnbase/linalg/Vec.h>
#include <kilnbase/linalg/detail/arithmetic.h>
#include <kilnbase/linalg/detail/elements.h>
#include <kilnbase/linalg/detail/errors.h>
#include <kilnbase/linalg/kernels/Kernels.h>

namespace vxKilnBase::detail {

namespace {

template <class T>
auto kernelOf(Operation operation) {
  const kernels::ElementKernels<T>& kernels = kernels::elements<T>();
  switch (operation) {
    case Operation::kAdd:
      return kernels.add;
    case Operation::kSubtract:
      return kernels.subtract;
    case Operation::kMultiply:
      return kernels.multiply;
    default:
      return kernels.divide;
  }
}

template <class T>
void check(Operation operation, const Operand<T>& a, const Operand<T>& b) {
  constexpr ErrorSource source = {VecNames<T>::vec, VecNames<T>::vecTag};
  if (a.length != b.length) raiseVectorLengths(source, a.length, b.length);
  if (operation != Operation::kDivide || !std::integral<T>) return;
  const unsigned count = b.stride == 0 ? std::min(b.length, 1U) : b.length;
  const auto divisors = elements(b.data, count, b.stride);
  if (std::ranges::find(divisors, T(0)) != divisors.end()) raiseDivisionByZero(source);
}

}  // namespace

template <class T>
Vec<T> combineByKernel(Operation operation, Operand<T> a, Operand<T> b) {
  check(operation, a, b);
  Vec<T> result(a.length);
  const unsigned n = std::min(result.length(), b.length);
  kernelOf<T>(operation)(n, a.data, a.stride, b.data, b.stride, result.data(), 1);
  std::fill_n(result.data() + n, result.length() - n, T(0));
  return result;
}

template <class T>
void changeByKernel(Operation operation, T* target, Operand<T> a, Operand<T> b) {
  check(operation, a, b);
  const bool sameElements = a.data == b.data && a.stride == b.stride;
  const bool copies = a.block == b.block && !sameElements;
  Vec<T> own(copies ? b.length : 0);
  if (copies) {
    std::ranges::copy(elements(b.data, own.length(), b.stride), own.data());
    b = {own.data(), nullptr, own.length(), 1};
  }
  const unsigned n = std::min(a.length, b.length);
  kernelOf<T>(operation)(n, a.data, a.stride, b.data, b.stride, target, a.stride);
}

#define KILN_INSTANTIATE_ARITHMETIC(T)                                \
  template Vec<T> combineByKernel(Operation, Operand<T>, Operand<T>); \
  template void changeByKernel(Operation, T*, Operand<T>, Operand<T>);
KILN_INSTANTIATE_ARITHMETIC(double)
KILN_INSTANTIATE_ARITHMETIC(int)
KILN_INSTANTIATE_ARITHMETIC(signed char)
#undef KILN_INSTANTIATE_ARITHMETIC

}  // namespace vxKilnBase::detail
