#include <cmath>
#include <gtest/gtest.h>

#include <kilnbase/linalg/DoubleLeastSqQR.h>
#include <kilnbase/linalg/DoubleSVDecomp.h>
#include <kilnbase/linalg/Products.h>
#include <kilnbase/linalg/vecmath.h>

#include "examples/surface_fit/BandedLeastSquares.h"
#include "tests/support/Matrices.h"

namespace surfacefit {

using kilntest::kEpsilon;
using kilntest::randomMatrix;
using vxKilnBase::transProduct;

constexpr int kWidth = 3;
constexpr int kGroups = 5;
constexpr int kUnknowns = (kGroups + kBandBlocks - 1) * kWidth;

// Random equations of every group of four blocks as one dense matrix, whose last column is the
// right-hand side, and as a banded triangle.
struct System {
  // Equation k of every group has only so many coefficients that are not 0.
  explicit System(int perGroup, int coefficients) : dense(kGroups * perGroup, kUnknowns + 1, 0.0) {
    BandedQr qr(kWidth);
    for (int group = 0; group < kGroups + kBandBlocks - 1; ++group) {
      if (group < kGroups) addGroup(group, perGroup, coefficients, qr);
      triangle.append(qr.next());
    }
  }

  void addGroup(int group, int perGroup, int coefficients, BandedQr& qr) {
    DoubleGenMat rows = randomMatrix(perGroup, qr.columns(), group + 1);
    for (int j = coefficients; j < qr.columns() - 1; ++j) rows.col(j) = 0.0;
    for (int i = 0; i < perGroup; ++i) {
      for (int j = 0; j < coefficients; ++j)
        dense(group * perGroup + i, group * kWidth + j) = rows(i, j);
      dense(group * perGroup + i, kUnknowns) = rows(i, qr.columns() - 1);
    }
    qr.add(rows.copy());
  }

  DoubleGenMat matrix() const { return DoubleGenMat(dense.data(), dense.rows(), kUnknowns); }
  DoubleVec rightSide() const { return dense.col(kUnknowns); }

  DoubleGenMat dense;
  BandedTriangle triangle{kWidth};
};

// The largest difference, relative to the largest element.
double difference(const DoubleVec& a, const DoubleVec& b) {
  return maxValue(abs(a - b)) / maxValue(abs(b));
}

TEST(BandedLeastSquares, AgreesWithDenseDecompositions) {
  const System system(20, kBandBlocks * kWidth);
  const DoubleSVDecomp svd(system.matrix());
  const DoubleVec values = svd.singularValues();
  const double bound = 20.0 * kUnknowns * kEpsilon * values(0) / values(kUnknowns - 1);

  const BandedSolution solution = solveLeastSquares(system.triangle, 1e-6, 1.0);
  EXPECT_EQ(kUnknowns, solution.determined);
  EXPECT_LT(difference(solution.x, DoubleLeastSqQR(system.matrix()).solve(system.rightSide())),
            bound);
  EXPECT_NEAR(values(kUnknowns - 1), system.triangle.smallestSingularValue(),
              0.2 * values(kUnknowns - 1));

  DoubleGenMat inverse = svd.rightVecs();
  for (int j = 0; j < kUnknowns; ++j) inverse.col(j) /= values(j);
  EXPECT_LT(
      difference(system.triangle.inverseGramDiagonal(), transProduct(inverse, inverse).diagonal()),
      bound);
}

// The shares that the damped solution has of the solutions along the singular vectors.
TEST(BandedLeastSquares, DampsWhatIsNotDetermined) {
  constexpr double kDamping = 0.5;
  for (const auto& [perGroup, coefficients] : {std::pair{20, 7}, {3, kBandBlocks * kWidth}}) {
    const System system(perGroup, coefficients);
    const DoubleGenMat a = system.matrix();
    const DoubleSVDecomp svd(a);
    const double weight = kDamping * system.triangle.meanColumn();
    DoubleVec expected(kUnknowns, 0.0);
    for (int k = 0; k < std::min(kUnknowns, static_cast<int>(a.rows())); ++k) {
      const double s = svd.singularValues()(k);
      if (s < 1e-9) continue;
      const double left = std::pow(1.0 + s * s / (weight * weight), -4);
      const double along = dot(svd.leftVecs().col(k), system.rightSide()) / s;
      expected += svd.rightVecs().col(k) * ((1.0 - left) * along);
    }
    const BandedSolution solution = solveLeastSquares(system.triangle, 1e-2, kDamping);
    EXPECT_LT(difference(solution.x, expected), 200.0 * kUnknowns * kEpsilon) << perGroup;
    EXPECT_LT(solution.determined, kUnknowns);
    for (int k = kUnknowns - kBandBlocks * kWidth + coefficients; k < kUnknowns; ++k)
      EXPECT_EQ(0.0, solution.x(k)) << k;  // in no equation
  }
}

}  // namespace surfacefit
