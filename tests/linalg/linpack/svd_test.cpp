// The singular value decomposition, and the norm and the rotation that it stands on.
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

#include <kilnbase/linalg/linpack/dnrm2.h>
#include <kilnbase/linalg/linpack/drotg.h>
#include <kilnbase/linalg/linpack/dsvdc.h>

#include "padded.h"

namespace {

using namespace vxKilnBase::linpack;
using kilntest::Doubles;
using kilntest::Index;
using kilntest::Padded;

constexpr double kTolerance = 1e-11;

// qᵀq - I, which is 0 for orthonormal columns.
void expectOrthonormal(Padded& q) {
  for (Index j = 0; j < q.columns; ++j) {
    for (Index k = 0; k <= j; ++k) {
      double dot = 0.0;
      for (Index i = 0; i < q.rows; ++i) dot += q.at(i, j) * q.at(i, k);
      EXPECT_NEAR(dot, j == k ? 1.0 : 0.0, kTolerance) << j << ", " << k;
    }
  }
}

void expectDecomposition(Padded x, double scale) {
  const Index n = x.rows, p = x.columns, values = std::min(n, p);
  for (Index j = 0; j < p; ++j) {
    for (Index i = 0; i < n; ++i) x.at(i, j) *= scale;
  }
  for (int job : {11, 21, 1, 10, 0}) {
    SCOPED_TRACE(testing::Message() << n << " by " << p << ", job " << job << ", scale " << scale);
    const Index left = job / 10 == 0 ? 0 : job / 10 == 1 ? n : values;
    Padded a = x, u(n, left), v(p, job % 10 != 0 ? p : 0), s(std::min(n + 1, p), 1), e(p, 1),
           work(n, 1);
    const Padded uGuards(n, left);
    EXPECT_EQ(dsvdc(a.data(), a.stride(), static_cast<int>(n), static_cast<int>(p), s.data(),
                    e.data(), u.data(), u.stride(), v.data(), v.stride(), work.data(), job),
              0);
    for (Index j = 1; j < s.rows; ++j) EXPECT_GE(s.at(j - 1, 0), s.at(j, 0));
    EXPECT_GE(s.at(s.rows - 1, 0), 0.0);
    for (Index j = 0; j < p; ++j) EXPECT_NEAR(e.at(j, 0) / scale, 0.0, kTolerance);
    expectOrthonormal(u);
    expectOrthonormal(v);
    if (job % 10 == 0 || left == 0) continue;
    Padded product(n, p);
    for (Index j = 0; j < p; ++j) {
      for (Index i = 0; i < n; ++i) {
        product.at(i, j) = 0.0;
        for (Index k = 0; k < values; ++k) product.at(i, j) += u.at(i, k) * s.at(k, 0) * v.at(j, k);
      }
    }
    EXPECT_EQ(product.difference(x, scale * kTolerance), "");
  }
}

TEST(dsvdc, DecomposesEveryShape) {
  for (Index n : {1, 2, 3, 8, 17, 70}) {
    for (Index p : {1, 2, 3, 8, 17, 70}) expectDecomposition(Padded(n, p, 3), 1.0);
  }
  expectDecomposition(Padded(7, 5, 3), 0x1p-1000);
  expectDecomposition(Padded(7, 5, 3), 0x1p1000);
  expectDecomposition(Padded(100, 66, 4), 1.0);
}

TEST(dnrm2, SumsEveryLengthAndStride) {
  for (Index n = 0; n <= 40; ++n) {
    for (Index stride : {1, 3, -2}) {
      for (double scale : {1.0, 1e-200, 1e200}) {
        Doubles x(1, n, std::abs(stride), 1);
        double square = 0.0;
        for (Index i = 0; i < n; ++i) {
          double& element = x[i * std::abs(stride)];
          square += element * element;
          element *= scale;
        }
        const double* first = x.data() + (stride < 0 && n > 0 ? (n - 1) * -stride : 0);
        const double expected = std::sqrt(square) * scale;
        EXPECT_NEAR(dnrm2(n, first, stride), expected, 1e-14 * expected) << n << ", " << stride;
      }
    }
  }
  const double mixed[] = {0.0, 3e-300, 4e-300, 1.0, 3e200, 4e200};
  EXPECT_DOUBLE_EQ(dnrm2(3, mixed, 1), 5e-300);
  EXPECT_DOUBLE_EQ(dnrm2(4, mixed, 1), 1.0);
  EXPECT_DOUBLE_EQ(dnrm2(6, mixed, 1), 5e200);
}

TEST(rotationOf, TurnsTheSecondNumberIntoZero) {
  for (double scale : {1.0, 1e-300, 1e300}) {
    for (const auto& [f, g] :
         {std::pair{3.0, 4.0}, {-4.0, 3.0}, {3.0, -4.0}, {0.0, -5.0}, {5.0, 0.0}}) {
      SCOPED_TRACE(testing::Message() << f << ", " << g << " times " << scale);
      const Rotation rotation = rotationOf(f * scale, g * scale);
      EXPECT_NEAR(rotation.r / scale,
                  std::fabs(f) > std::fabs(g) ? std::copysign(5.0, f) : std::copysign(5.0, g),
                  1e-14);
      EXPECT_NEAR(rotation.first(f, g), rotation.r / scale, 1e-14);
      EXPECT_NEAR(rotation.second(f, g), 0.0, 1e-14);
      EXPECT_NEAR(std::hypot(rotation.cosine(), rotation.sine()), 1.0, 1e-15);
    }
  }
  EXPECT_EQ(rotationOf(0.0, 0.0).cosine(), 1.0);
}

}  // namespace
