#include <algorithm>
#include <cmath>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numbers>
#include <utility>
#include <vector>

#include <kilnbase/linalg/DoubleSymEig.h>
#include <kilnbase/linalg/vecmath.h>

#include "tests/support/MathErrors.h"
#include "tests/support/Matrices.h"

namespace {

using namespace kilntest;
using vxKilnBase::kEigenvaluesError;

constexpr double kLargestRatio = 30.0;

DoubleSymMat symmetric(unsigned n, const std::function<double(int, int)>& element) {
  DoubleSymMat a(n);
  for (int j = 0; j < static_cast<int>(n); ++j) {
    for (int i = 0; i <= j; ++i) a(i, j) = element(i, j);
  }
  return a;
}

DoubleSymMat randomSymmetric(unsigned n) {
  return toSymMat(randomMatrix(n, n, n));
}

DoubleVec valuesOnly(const DoubleSymMat& a) {
  DoubleSymEig eigen;
  EXPECT_EQ(1, eigen.computeVecs(0));
  eigen.factor(a);
  EXPECT_EQ(0U, eigen.eigenVecs().cols());
  return eigen.eigenValues();
}

// The first of the elements of nearly the largest magnitude.
double decidingElement(const DoubleVec& v) {
  const std::vector<double> elements = list(v);
  const double largest = std::max(maxValue(v), -minValue(v));
  return *std::ranges::find_if(elements, [&](double x) { return std::fabs(x) >= 0.9 * largest; });
}

// A V = V L with orthonormal V, ascending values and the promised signs; values alone are the same.
void expectDecomposed(const DoubleSymMat& a, const DoubleSymEig& eigen) {
  const unsigned n = a.rows();
  ASSERT_TRUE(eigen.good());
  const DoubleVec values = eigen.eigenValues();
  const DoubleGenMat v = eigen.eigenVecs(), full(a);
  DoubleGenMat scaled = v.copy();
  for (int j = 0; j < static_cast<int>(n); ++j) {
    scaled.col(j) *= values(j);
    EXPECT_GT(decidingElement(v.col(j)), 0.0);
  }
  EXPECT_LE(ratio(norm2(product(full, v) - scaled), norm2(full), n), kLargestRatio);
  EXPECT_LE(orthogonalityRatio(v), kLargestRatio);
  EXPECT_TRUE(std::ranges::is_sorted(list(values)));
  EXPECT_LE(ratio(norm2(valuesOnly(a) - values), norm2(full), n), kLargestRatio);
}

TEST(DoubleSymEig, DecomposesRandomMatricesOfEveryPath) {
  for (const unsigned n : {1U, 2U, 3U, 4U, 7U, 8U, 9U, 10U, 11U, 16U, 17U, 33U, 65U, 66U, 130U}) {
    SCOPED_TRACE(n);
    const DoubleSymMat a = randomSymmetric(n);
    const DoubleVec before = a.dataVec().copy();
    expectDecomposed(a, DoubleSymEig(a));
    EXPECT_EQ(before, a.dataVec());
    const DoubleVec odd(2 * before.length(), kNaN);
    odd.slice(0, before.length(), 2) = before;
    const DoubleSymMat view(odd.slice(0, before.length(), 2), n, n);
    EXPECT_EQ(DoubleSymEig(a).eigenVecs(), DoubleSymEig(view).eigenVecs());
  }
}

struct Known {
  const char* name;
  unsigned n;
  std::function<double(int, int)> element;
  std::function<double(int)> value;  // in ascending order
};

TEST(DoubleSymEig, FindsKnownValues) {
  using std::numbers::pi;
  const auto onDiagonal = [](const std::function<double(int)>& f) {
    return [f](int i, int j) { return i == j ? f(i) : 0.0; };
  };
  const Known table[] = {
      {"zero", 20, onDiagonal([](int) { return 0.0; }), [](int) { return 0.0; }},
      {"identity", 12, onDiagonal([](int) { return 1.0; }), [](int) { return 1.0; }},
      {"falling", 30, onDiagonal([](int i) { return -i; }), [](int k) { return k - 29.0; }},
      {"2 by 2", 2, [](int i, int j) { return i == j ? 2.0 - 3.0 * i : 1.5; },
       [](int k) { return 0.5 + (k == 0 ? -1.0 : 1.0) * std::sqrt(4.5); }},
      {"rank one", 40, [](int i, int j) { return (i + 1.0) * (j + 1.0); },
       [](int k) { return k == 39 ? 22140.0 : 0.0; }},
      {"repeated", 50, [](int i, int j) { return i == j ? 3.0 : 1.0; },
       [](int k) { return k == 49 ? 52.0 : 2.0; }},
      {"differences", 60, [](int i, int j) { return i == j       ? 2.0
                                                    : j - i == 1 ? -1.0
                                                                 : 0.0; },
       [](int k) { return 4.0 * std::pow(std::sin((k + 1) * pi / 122.0), 2); }},
      // Of each block of two the values are -1 and 1.
      {"exchanges", 64, [](int i, int j) { return i == (j ^ 1) ? 1.0 : 0.0; },
       [](int k) { return k < 32 ? -1.0 : 1.0; }},
  };
  for (const Known& known : table) {
    SCOPED_TRACE(known.name);
    const DoubleSymMat a = symmetric(known.n, known.element);
    const DoubleSymEig eigen(a);
    expectDecomposed(a, eigen);
    for (int k = 0; k < static_cast<int>(known.n); ++k) {
      const double size = norm2(DoubleGenMat(a));
      EXPECT_LE(ratio(eigen.eigenValues()(k) - known.value(k), size, known.n), kLargestRatio) << k;
    }
  }
}

TEST(DoubleSymEig, DecomposesMatricesThatAreHardToSeparateOrGraded) {
  // Wilkinson's W21+: its two largest values agree in 14 digits.
  const DoubleSymMat wilkinson = symmetric(21, [](int i, int j) {
    return i == j ? std::abs(10 - i) : j - i == 1 ? 1.0 : 0.0;
  });
  const DoubleSymEig eigen(wilkinson);
  expectDecomposed(wilkinson, eigen);
  EXPECT_NEAR(10.74619418290332, eigen.eigenValues()(19), 1e-13);
  EXPECT_NEAR(10.74619418290339, eigen.eigenValues()(20), 1e-13);
  for (const double base : {0.1, 10.0, 1e-12, 1e12}) {
    SCOPED_TRACE(base);
    const DoubleSymMat graded =
        symmetric(12, [&](int i, int j) { return std::pow(base, i + j) * (1.0 + 0.1 * i * j); });
    expectDecomposed(graded, DoubleSymEig(graded));
  }
}

// Powers of two leave all digits of a matrix alone, but for elements below 2^-1000.
TEST(DoubleSymEig, WorksNearUnderflowAndOverflow) {
  for (const int exponent : {-1070, -1020, -997, -500, 500, 997, 1020}) {
    for (const unsigned n : {1U, 2U, 3U, 20U}) {
      SCOPED_TRACE(testing::Message() << exponent << " " << n);
      const double scale = std::ldexp(1.0, exponent);
      const DoubleSymMat a = randomSymmetric(n) * scale;
      const DoubleSymEig eigen(a), reference(a / scale);
      EXPECT_EQ(reference.eigenVecs(), eigen.eigenVecs());
      EXPECT_EQ(reference.eigenValues() * scale, eigen.eigenValues());
      EXPECT_EQ(valuesOnly(a / scale) * scale, valuesOnly(a));
    }
  }
}

TEST(DoubleSymEig, WarnsOfElementsThatAreNotFinite) {
  RecordedMathErrors errors;
  for (const double bad : {kNaN, kInfinity, -kInfinity}) {
    for (const unsigned n : {1U, 3U, 40U}) {
      DoubleSymMat a = randomSymmetric(n);
      DoubleSymEig eigen(a);
      const DoubleVec before = eigen.eigenValues();
      const DoubleVec kept = before.copy();
      a(static_cast<int>(n) - 1, static_cast<int>(n) / 2) = bad;
      eigen.factor(a);
      const auto raised = errors.takeAll();
      ASSERT_EQ(1U, raised.size());
      EXPECT_EQ(kEigenvaluesError, raised[0].number);
      EXPECT_EQ("Can't find eigenvalues: an element of the matrix is infinite or not a number",
                raised[0].text);
      EXPECT_TRUE(eigen.fail());
      EXPECT_THAT(list(eigen.eigenValues()), testing::Each(testing::IsNan()));
      EXPECT_THAT(list(eigen.eigenVecs().dataVec()), testing::Each(testing::IsNan()));
      EXPECT_EQ(kept, before);
      eigen.factor(randomSymmetric(n));
      EXPECT_TRUE(eigen.good());
    }
  }
  EXPECT_TRUE(DoubleSymEig().fail());
  EXPECT_TRUE(DoubleSymEig(DoubleSymMat()).fail());
  EXPECT_THAT(errors.takeAll(), testing::IsEmpty());
}

TEST(DoubleSymEig, KeepsVectorsThatAreNotWanted) {
  DoubleSymEig eigen(randomSymmetric(3));
  const DoubleGenMat vectors = eigen.eigenVecs().copy();
  eigen.computeVecs(0);
  eigen.factor(randomSymmetric(4));
  EXPECT_EQ(4U, eigen.eigenValues().length());
  EXPECT_EQ(vectors, eigen.eigenVecs());
  EXPECT_EQ(0, eigen.computeVecs(7));
  EXPECT_EQ(1, eigen.computeVecs(1));
}

}  // namespace
