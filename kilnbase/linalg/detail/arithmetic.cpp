#include <algorithm>
#include <concepts>

#include <kilnbase/linalg/Vec.h>
#include <kilnbase/linalg/detail/arithmetic.h>
#include <kilnbase/linalg/detail/elements.h>
#include <kilnbase/linalg/detail/errors.h>
#include <kilnbase/linalg/kernels/Kernels.h>

namespace vxKilnBase::detail {

namespace {

// A vector, or one number that counts `length` times and has stride 0.
template <class T>
struct Operand {
  const T* data;
  unsigned length;
  int stride;

  explicit Operand(const Vec<T>& v) : data(v.data()), length(v.length()), stride(v.stride()) {}
  Operand(const T& x, unsigned count) : data(&x), length(count), stride(0) {}
};

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

template <class T>
Vec<T> combined(Operation operation, const Operand<T>& a, const Operand<T>& b) {
  check(operation, a, b);
  Vec<T> result(a.length);
  const unsigned n = std::min(result.length(), b.length);
  kernelOf<T>(operation)(n, a.data, a.stride, b.data, b.stride, result.data(), 1);
  std::fill_n(result.data() + n, result.length() - n, T(0));
  return result;
}

template <class T>
void change(Operation operation, Vec<T>& a, const Operand<T>& b) {
  const unsigned n = std::min(a.length(), b.length);
  kernelOf<T>(operation)(n, a.data(), a.stride(), b.data, b.stride, a.data(), a.stride());
}

}  // namespace

template <class T>
Vec<T> combineByKernel(Operation operation, const Vec<T>& a, const Vec<T>& b) {
  return combined(operation, Operand<T>(a), Operand<T>(b));
}

template <class T>
Vec<T> combineByKernel(Operation operation, const Vec<T>& a, T b) {
  return combined(operation, Operand<T>(a), Operand<T>(b, a.length()));
}

template <class T>
Vec<T> combineByKernel(Operation operation, T a, const Vec<T>& b) {
  return combined(operation, Operand<T>(a, b.length()), Operand<T>(b));
}

template <class T>
void changeByKernel(Operation operation, Vec<T>& a, const Vec<T>& b, bool overlaps) {
  check(operation, Operand<T>(a), Operand<T>(b));
  const bool sameElements = a.data() == b.data() && a.stride() == b.stride();
  if (overlaps && !sameElements) return change(operation, a, Operand<T>(b.copy()));
  change(operation, a, Operand<T>(b));
}

template <class T>
void changeByKernel(Operation operation, Vec<T>& a, T b, bool) {
  const Operand<T> number(b, a.length());
  check(operation, Operand<T>(a), number);
  change(operation, a, number);
}

#define KILN_INSTANTIATE_ARITHMETIC(T)                                      \
  template Vec<T> combineByKernel(Operation, const Vec<T>&, const Vec<T>&); \
  template Vec<T> combineByKernel(Operation, const Vec<T>&, T);             \
  template Vec<T> combineByKernel(Operation, T, const Vec<T>&);             \
  template void changeByKernel(Operation, Vec<T>&, const Vec<T>&, bool);    \
  template void changeByKernel(Operation, Vec<T>&, T, bool);
KILN_INSTANTIATE_ARITHMETIC(double)
KILN_INSTANTIATE_ARITHMETIC(int)
KILN_INSTANTIATE_ARITHMETIC(signed char)
#undef KILN_INSTANTIATE_ARITHMETIC

}  // namespace vxKilnBase::detail
