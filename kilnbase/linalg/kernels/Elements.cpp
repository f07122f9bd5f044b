#include <kilnbase/linalg/kernels/Elements.h>
#include <kilnbase/linalg/kernels/Simd.h>
#include <kilnbase/linalg/kernels/Tuning.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

using detail::SumOf;
using detail::Wrapping;

struct Add {
  template <class T>
  static T of(T a, T b) {
    return static_cast<T>(static_cast<Wrapping<T>>(a) + static_cast<Wrapping<T>>(b));
  }
};
struct Subtract {
  template <class T>
  static T of(T a, T b) {
    return static_cast<T>(static_cast<Wrapping<T>>(a) - static_cast<Wrapping<T>>(b));
  }
};
struct Multiply {
  template <class T>
  static T of(T a, T b) {
    return static_cast<T>(static_cast<Wrapping<T>>(a) * static_cast<Wrapping<T>>(b));
  }
};
struct Divide {
  static double of(double a, double b) { return a / b; }
  template <class T>
  static T of(T a, T b) {
    if (b == 0) return 0;
    return b == -1 ? Subtract::of(T(0), a) : static_cast<T>(a / b);
  }
};

// out[i] = a[i] op b[i]. No element of `out` is an operand of another one.
template <class Operation, class T>
void binary(Index n, const T* a, Index strideA, const T* b, Index strideB, T* out,
            Index strideOut) {
  if (n == 0) return;
  if (strideOut == 1 && strideA == 1 && strideB == 1) {
#pragma GCC ivdep
#pragma GCC unroll 4
    for (Index i = 0; i < n; ++i) out[i] = Operation::of(a[i], b[i]);
  } else if (strideOut == 1 && strideA == 1 && strideB == 0) {
    const T factor = *b;
#pragma GCC ivdep
#pragma GCC unroll 4
    for (Index i = 0; i < n; ++i) out[i] = Operation::of(a[i], factor);
  } else if (strideOut == 1 && strideA == 0 && strideB == 1) {
    const T factor = *a;
#pragma GCC ivdep
#pragma GCC unroll 4
    for (Index i = 0; i < n; ++i) out[i] = Operation::of(factor, b[i]);
  } else {
#pragma GCC unroll 4
    for (Index i = 0; i < n; ++i) {
      out[i * strideOut] = Operation::of(a[i * strideA], b[i * strideB]);
    }
  }
}

// Σ term(i) with four accumulators.
template <class Sum, class Term>
inline Sum sumOfTerms(Index n, Term term) {
  Wrapping<Sum> sums[4] = {};
  Index i = 0;
  for (; i + 4 <= n; i += 4) {
    for (Index k = 0; k < 4; ++k) sums[k] += static_cast<Wrapping<Sum>>(term(i + k));
  }
  for (; i < n; ++i) sums[0] += static_cast<Wrapping<Sum>>(term(i));
  return static_cast<Sum>((sums[0] + sums[1]) + (sums[2] + sums[3]));
}

// The sum of term(i), the register at element i, over the full registers of n elements. `i` is left
// at the first element behind them.
template <class Term>
inline double sumOfVectors(Index n, Index& i, Term term) {
  Vector sums[4] = {};
  for (; i + 4 * kWidth <= n; i += 4 * kWidth) {
    for (Index k = 0; k < 4; ++k) sums[k] += term(i + k * kWidth);
  }
  for (; i + kWidth <= n; i += kWidth) sums[0] += term(i);
  return sumOf((sums[0] + sums[1]) + (sums[2] + sums[3]));
}

double sumOfProducts(Index n, const double* a, const double* b) {
  Index i = 0;
  double sum = sumOfVectors(n, i, [=](Index at) { return load(a + at) * load(b + at); });
  for (; i < n; ++i) sum += a[i] * b[i];
  return sum;
}

double sumOfElements(Index n, const double* a) {
  Index i = 0;
  double sum = sumOfVectors(n, i, [=](Index at) { return load(a + at); });
  for (; i < n; ++i) sum += a[i];
  return sum;
}

template <class T>
SumOf<T> sumOfProducts(Index n, const T* a, const T* b) {
  unsigned sum = 0;
  for (Index i = 0; i < n; ++i) sum += static_cast<unsigned>(a[i]) * static_cast<unsigned>(b[i]);
  return static_cast<int>(sum);
}

template <class T>
SumOf<T> sumOfElements(Index n, const T* a) {
  unsigned sum = 0;
  for (Index i = 0; i < n; ++i) sum += static_cast<unsigned>(a[i]);
  return static_cast<int>(sum);
}

template <class T>
SumOf<T> dot(Index n, const T* a, Index strideA, const T* b, Index strideB) {
  using Sum = SumOf<T>;
  if (strideA == 1 && strideB == 1 && n >= tuning::kLeastRegisterSum) return sumOfProducts(n, a, b);
  return sumOfTerms<Sum>(n, [=](Index i) {
    return static_cast<Wrapping<Sum>>(a[i * strideA]) * static_cast<Wrapping<Sum>>(b[i * strideB]);
  });
}

template <class T>
SumOf<T> sum(Index n, const T* a, Index stride) {
  using Sum = SumOf<T>;
  if (stride == 1 && n >= tuning::kLeastRegisterSum) return sumOfElements(n, a);
  return sumOfTerms<Sum>(n, [=](Index i) { return a[i * stride]; });
}

struct Greater {
  template <class T>
  static bool beats(T a, T b) {
    return a > b;
  }
  template <class V>
  static V better(V a, V b) {
    return a > b ? a : b;
  }
};
struct Less {
  template <class T>
  static bool beats(T a, T b) {
    return a < b;
  }
  template <class V>
  static V better(V a, V b) {
    return a < b ? a : b;
  }
};

template <class Order, class T>
Index firstBest(Index n, const T* a, Index stride) {
  Index best = 0;
  T bestValue = a[0];
  for (Index i = 1; i < n; ++i) {
    if (Order::beats(a[i * stride], bestValue)) {
      best = i;
      bestValue = a[i * stride];
    }
  }
  return best;
}

template <class T>
struct Register {
  static constexpr Index width = KILN_VECTOR_BYTES / static_cast<Index>(sizeof(T));
  typedef T Type __attribute__((vector_size(KILN_VECTOR_BYTES)));
  typedef T Unaligned
      __attribute__((vector_size(KILN_VECTOR_BYTES), aligned(sizeof(T)), may_alias));
};

// The best element of the block of 8 registers at `a`; `best` when no element beats it.
template <class Order, class T>
inline T bestOfBlock(const T* a, T best) {
  using V = typename Register<T>::Type;
  V bests[4];
  for (Index k = 0; k < 4; ++k) bests[k] = V{} + best;
  for (Index k = 0; k < 8; ++k) {
    const V x =
        *reinterpret_cast<const typename Register<T>::Unaligned*>(a + k * Register<T>::width);
    bests[k % 4] = Order::better(x, bests[k % 4]);
  }
  const V all = Order::better(Order::better(bests[0], bests[1]), Order::better(bests[2], bests[3]));
  for (Index k = 0; k < Register<T>::width; ++k) best = Order::beats(all[k], best) ? all[k] : best;
  return best;
}

// Finds the first block that holds the best element, then the element in the block.
template <class Order, class T>
Index bestIndex(Index n, const T* a, Index stride) {
  constexpr Index blockSize = 8 * Register<T>::width;
  if (stride != 1 || n < 2 * blockSize || a[0] != a[0]) return firstBest<Order>(n, a, stride);
  T best = a[0];
  Index bestStart = 0;
  Index i = 0;
  for (; i + blockSize <= n; i += blockSize) {
    const T candidate = bestOfBlock<Order>(a + i, best);
    if (Order::beats(candidate, best)) {
      best = candidate;
      bestStart = i;
    }
  }
  for (; i < n; ++i) {
    if (Order::beats(a[i], best)) {
      best = a[i];
      bestStart = i;
    }
  }
  while (a[bestStart] != best) ++bestStart;
  return bestStart;
}

template <class T>
constexpr ElementKernels<T> makeElementKernels() {
  return {binary<Add, T>, binary<Subtract, T>,   binary<Multiply, T>, binary<Divide, T>, dot<T>,
          sum<T>,         bestIndex<Greater, T>, bestIndex<Less, T>};
}

}  // namespace

extern const ElementKernels<double> doubleKernels = makeElementKernels<double>();
extern const ElementKernels<int> intKernels = makeElementKernels<int>();
extern const ElementKernels<signed char> scharKernels = makeElementKernels<signed char>();

}  // namespace vxKilnBase::kernels::KILN_ISA
