// Element-wise operations, sums and searches beside plain loops: every length, stride and type.
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <type_traits>

#include <kilnbase/linalg/kernels/Kernels.h>

#include "tests/support/GuardedArray.h"

namespace {

using kilntest::GuardedArray;
using kilntest::Index;
using vxKilnBase::kernels::active;
using vxKilnBase::kernels::ElementKernels;
using vxKilnBase::kernels::elements;

constexpr Index kStrides[] = {1, 3, -1, -2};

// A vector of n elements, `stride` apart. With stride 0 it is one number n times.
template <class T>
struct Strided {
  Strided(Index n, Index apart, std::uint64_t seed)
      : array(1, apart == 0 ? 1 : n, std::abs(apart), seed),
        stride(apart),
        start(apart < 0 && n > 0 ? (1 - n) * apart : 0) {}

  T* data() { return array.data() + start; }
  T& operator[](Index i) { return data()[i * stride]; }

  GuardedArray<T> array;
  Index stride;
  Index start;
};

template <class T>
class ElementKernelsTest : public testing::Test {
 protected:
  using Plain = std::conditional_t<std::is_same_v<T, double>, double, long long>;
  using Operation = Plain (*)(Plain a, Plain b);

  // A stride 0 of the result stands for a result in the place of a.
  static void expectBinary(typename ElementKernels<T>::Binary kernel, Operation plain, Index n) {
    for (Index strideA : {0, 1, 3, -2}) {
      for (Index strideB : {0, 1, 3, -2}) {
        for (Index strideOut : {0, 1, 2, -1}) {
          if (strideA == 0 && strideOut == 0) continue;
          SCOPED_TRACE(testing::Message() << n << " elements, strides " << strideA << ", "
                                          << strideB << ", " << strideOut);
          Strided<T> a(n, strideA, 1), b(n, strideB, 2), apart(n, strideOut, 3);
          if (n > 0) a[n / 2] = std::numeric_limits<T>::lowest();
          Strided<T>& out = strideOut == 0 ? a : apart;
          Strided<T> expected = out;
          // Conversion to an integer wraps around.
          for (Index i = 0; i < n; ++i) expected[i] = static_cast<T>(plain(a[i], b[i]));
          kernel(n, a.data(), strideA, b.data(), strideB, out.data(), out.stride);
          EXPECT_EQ(out.array.difference(expected.array), "");
        }
      }
    }
  }

  static Plain quotient(Plain a, Plain b) {
    return !std::is_same_v<T, double> && b == 0 ? 0 : a / b;
  }
};

using Types = testing::Types<double, int, signed char>;
TYPED_TEST_SUITE(ElementKernelsTest, Types);

TYPED_TEST(ElementKernelsTest, BinaryOperationsOfEveryLengthAndStride) {
  using Wide = typename TestFixture::Plain;
  const ElementKernels<TypeParam>& kernels = elements<TypeParam>();
  const std::pair<typename ElementKernels<TypeParam>::Binary, typename TestFixture::Operation>
      kOperations[] = {{kernels.add, [](Wide a, Wide b) { return a + b; }},
                       {kernels.subtract, [](Wide a, Wide b) { return a - b; }},
                       {kernels.multiply, [](Wide a, Wide b) { return a * b; }},
                       {kernels.divide, TestFixture::quotient}};
  for (const auto& [kernel, plain] : kOperations) {
    for (Index n = 0; n <= 3 * active().vectorDoubles + 1; ++n) {
      this->expectBinary(kernel, plain, n);
    }
    this->expectBinary(kernel, plain, 8 * active().vectorDoubles * 8 + 5);
  }
}

TYPED_TEST(ElementKernelsTest, SumsOfEveryLengthAndStride) {
  const ElementKernels<TypeParam>& kernels = elements<TypeParam>();
  for (Index n = 0; n <= 9 * active().vectorDoubles + 1; ++n) {
    for (Index stride : kStrides) {
      for (Index other : {stride, Index{1}}) {
        SCOPED_TRACE(testing::Message() << n << " elements, strides " << stride << ", " << other);
        Strided<TypeParam> a(n, stride, 1), b(n, other, 2);
        typename ElementKernels<TypeParam>::Sum sum = 0, dot = 0;
        for (Index i = 0; i < n; ++i) {
          sum += a[i];
          dot += a[i] * b[i];
        }
        EXPECT_EQ(kernels.sum(n, a.data(), stride), sum);
        EXPECT_EQ(kernels.dot(n, a.data(), stride, b.data(), other), dot);
      }
    }
  }
}

// Every place of the best element, with the same element again at the end; long enough for several
// blocks of registers.
TYPED_TEST(ElementKernelsTest, SearchesFindTheFirstBestElement) {
  const ElementKernels<TypeParam>& kernels = elements<TypeParam>();
  const Index block = 64 * Index{active().vectorDoubles} / static_cast<Index>(sizeof(TypeParam));
  for (Index n :
       {Index{1}, Index{2}, Index{7}, 2 * block - 1, 2 * block, 2 * block + 3, 3 * block}) {
    for (Index best = 0; best < n; ++best) {
      const Index stride = kStrides[n < block ? best % 4 : 0];
      SCOPED_TRACE(testing::Message() << best << " of " << n << ", stride " << stride);
      Strided<TypeParam> a(n, stride, 1);
      a[best] = a[n - 1] = 9;
      EXPECT_EQ(kernels.maxIndex(n, a.data(), stride), best);
      a[best] = a[n - 1] = -9;
      EXPECT_EQ(kernels.minIndex(n, a.data(), stride), best);
    }
  }
}

TEST(ElementKernels, SearchesIgnoreNaNsButTheFirstElement) {
  const ElementKernels<double>& kernels = elements<double>();
  for (Index n : {Index{5}, 40 * Index{active().vectorDoubles}}) {
    Strided<double> a(n, 1, 1);
    a[1] = std::nan("");
    a[n - 2] = 9.0;
    EXPECT_EQ(kernels.maxIndex(n, a.data(), 1), n - 2);
    a[0] = std::nan("");
    EXPECT_EQ(kernels.maxIndex(n, a.data(), 1), 0);
    EXPECT_EQ(kernels.minIndex(n, a.data(), 1), 0);
  }
}

}  // namespace
