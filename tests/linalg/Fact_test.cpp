#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>

#include <kilnbase/linalg/DoubleGenFact.h>
#include <kilnbase/linalg/DoubleSymFact.h>
#include <kilnbase/linalg/vecmath.h>

#include "tests/support/MathErrors.h"
#include "tests/support/Matrices.h"

namespace {

using namespace kilntest;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kMostRatio = 30.0;
constexpr const char* kNotEstimated = "Condition number not calculated";
constexpr const char* kNotFactorized =
    "Can't solve system of equations, matrix not successfully factorized";

template <class Matrix>
Matrix matrixOf(const DoubleGenMat& a) {
  if constexpr (std::is_same_v<Matrix, DoubleSymMat>)
    return toSymMat(a);
  else
    return a;
}

template <class Matrix>
class FactFamily : public testing::Test {
 protected:
  static Matrix random(unsigned n, std::uint64_t seed = 1) {
    return matrixOf<Matrix>(randomMatrix(n, n, seed));
  }
  static Matrix singular() { return matrixOf<Matrix>(DoubleGenMat(2, 2, 3.0)); }
};
using Matrices = testing::Types<DoubleGenMat, DoubleSymMat>;
TYPED_TEST_SUITE(FactFamily, Matrices);

// The factors are no matrix to be factored.
static_assert(!std::is_constructible_v<DoubleGenFact, const DoubleGenFact&, int>);

}  // namespace

TYPED_TEST(FactFamily, SolutionsAndInversesAreExactToRounding) {
  using Fact = vxKilnBase::Fact<TypeParam>;
  for (const auto& [name, full, condition] : testMatrices()) {
    if (full.rows() != full.cols() || full.rows() == 0) continue;
    const auto a = matrixOf<TypeParam>(full);
    const Fact estimated(a, 1), plain(a);
    SCOPED_TRACE(name);
    EXPECT_EQ(plain, estimated);
    if (estimated.fail() || plain.fail()) continue;
    const unsigned n = a.rows();
    const DoubleGenMat whole(a), b = randomMatrix(n, 3, 8), x = estimated.solve(b);
    const double size = norm1(whole);
    for (const DoubleVec& found : {plain.solve(b.col(2)), x.col(2)}) {
      const DoubleVec error = b.col(2) - product(a, found);
      EXPECT_LT(ratio(norm2(error), size * norm2(found), 1), kMostRatio);
    }
    const DoubleGenMat inverse(estimated.inverse());
    const double inverseSize = norm1(inverse);
    if (std::isinf(inverseSize * size)) continue;
    EXPECT_LT(ratio(norm1(product(whole, inverse) - identity(n)), size * inverseSize, n),
              kMostRatio);
    const double rcond = estimated.condition();
    EXPECT_GE(rcond * (1 + 1e-6), 1.0 / (size * inverseSize));
    EXPECT_LE(rcond, 10.0 / (size * inverseSize));
  }
}

TYPED_TEST(FactFamily, TellsWhatItKnowsOfTheCondition) {
  using Fact = vxKilnBase::Fact<TypeParam>;
  RecordedMathErrors errors;
  const Fact empty, regular(this->random(4)), singular(this->singular());
  EXPECT_EQ(-1.0, empty.condition());
  EXPECT_EQ(-1.0, regular.condition());
  EXPECT_THAT(errors.takeTexts(), ElementsAre(kNotEstimated, kNotEstimated));
  EXPECT_EQ(0.0, singular.condition());
  EXPECT_EQ(0.0, Fact(this->singular(), 1).condition());
  EXPECT_EQ(1.0, Fact(matrixOf<TypeParam>(DoubleGenMat(1, 1, 49.0)), 1).condition());
  EXPECT_EQ(0.0, Fact(matrixOf<TypeParam>(DoubleGenMat(2, 2, kNaN)), 1).condition());
  EXPECT_EQ(0.0, Fact(matrixOf<TypeParam>(DoubleGenMat(2, 2, kInfinity)), 1).condition());
  EXPECT_TRUE(empty.fail());
  EXPECT_FALSE(empty.isSingular());
  EXPECT_TRUE(regular.good());
  EXPECT_TRUE(singular.isSingular());
  EXPECT_TRUE(singular.fail());
  EXPECT_EQ(0.0, singular.determinant());
  EXPECT_EQ(0.0, empty.determinant());

  DoubleGenMat two(2, 2, 2.0);
  two(0, 0) = 0.0;
  EXPECT_DOUBLE_EQ(-4.0, Fact(matrixOf<TypeParam>(two)).determinant());

  Fact again(this->singular());
  again.factor(TypeParam());
  EXPECT_EQ(0.0, again.condition());  // stays as it was
  EXPECT_THAT(errors.takeTexts(), IsEmpty());
}

TYPED_TEST(FactFamily, CopiesShareAndStandAlone) {
  using Fact = vxKilnBase::Fact<TypeParam>;
  const auto a = this->random(6), b = this->random(6, 2);
  const DoubleVec y = randomVector(6, 3);
  const Fact ofA(a), ofB(b, 1);
  Fact fact(a), copy(fact);
  fact.factor(b, 1);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(ofA.solve(y), copy.solve(y));
    EXPECT_EQ(ofB.solve(y), fact.solve(y));
    EXPECT_EQ(ofB.condition(), fact.condition());
    if (i == 0) swap(fact, copy);
    std::swap(fact, copy);
    if (i == 1) copy = ofA, fact = copy, fact = ofB;
  }
  Fact apart(a);  // factors that are not contiguous
  const DoubleVec store(2 * a.length(), 0.0);
  apart.reference(TypeParam(store.slice(0, a.length(), 2), 6, 6));
  apart.dataVec() = ofA.dataVec();
  EXPECT_EQ(ofA.solve(y), apart.solve(y));
}

TYPED_TEST(FactFamily, MisuseIsRaisedAndHarmless) {
  using Fact = vxKilnBase::Fact<TypeParam>;
  const Fact regular(this->random(4)), singular(this->singular()), empty, other(this->random(2, 5));
  Fact assigned(this->random(2)), resized(this->random(3));
  resized.resize(5, 5);
  const DoubleVec two(2, 1.0);
  const std::string length = "b vector length wrong (2!=4)";
  using vxKilnBase::kNotFactoredError, vxKilnBase::kRightSideLengthError;
  expectErrors({
      {[&] { EXPECT_EQ(DoubleVec(), regular.solve(two)); }, kRightSideLengthError, length},
      {[&] { EXPECT_EQ(DoubleGenMat(), regular.solve(DoubleGenMat(2, 4, 1.0))); },
       kRightSideLengthError, length},
      {[&] { EXPECT_EQ(2U, singular.solve(two).length()); }, kNotFactoredError, kNotFactorized},
      {[&] { EXPECT_EQ(2U, singular.inverse().rows()); }, kNotFactoredError, kNotFactorized},
      {[&] { EXPECT_EQ(DoubleVec(), empty.solve(DoubleVec())); }, kNotFactoredError,
       kNotFactorized},
      {[&] { EXPECT_EQ(TypeParam(), resized.inverse()); }, kNotFactoredError, kNotFactorized},
  });
  EXPECT_EQ(0.0, resized.determinant());
  RecordedMathErrors errors;
  assigned = regular;
  errors.takeTexts();
  EXPECT_EQ(DoubleVec(), assigned.solve(two));
  EXPECT_THAT(errors.takeTexts(), ElementsAre(kNotFactorized));
  assigned = other;
  EXPECT_EQ(other.solve(two), assigned.solve(two));
}

TEST(DoubleGenFact, AMatrixThatIsNotSquareHasTheOrderOfItsRows) {
  RecordedMathErrors errors;
  const DoubleGenFact wide(DoubleGenMat(vectorOf({2.0, 0.0, 0.0, 4.0, 7.0, 8.0}), 2, 3)),
      tall(DoubleGenMat(3, 2, 1.0));
  EXPECT_THAT(errors.takeTexts(), ElementsAre("Can't factorize, 2x3 matrix not square",
                                              "Can't factorize, 3x2 matrix not square"));
  EXPECT_THAT(list(wide.solve(DoubleVec(2, 4.0))), ElementsAre(2, 1));
  EXPECT_TRUE(tall.fail());
}

TEST(DoubleSymFact, DividesByTheSmallestPivots) {
  for (const unsigned n : {2U, 9U, 40U}) {
    const DoubleVec b(n, 3e-310);
    DoubleSymMat single(n), paired(n);
    single.zero();
    paired.zero();
    for (int i = 0; i < static_cast<int>(n); ++i) single(i, i) = 1e-310;
    for (int i = 0; i + 1 < static_cast<int>(n); i += 2) paired(i, i + 1) = 1e-310;
    if (n % 2 != 0) paired(n - 1, n - 1) = 1.0;
    EXPECT_NEAR(3.0, DoubleSymFact(single).solve(b)(0), 1e-10) << n;
    EXPECT_NEAR(3.0, DoubleSymFact(paired).solve(b)(0), 1e-10) << n;
  }
}

TYPED_TEST(FactFamily, TakesAnyFactorizationOnceItsMatrixWasMovedAway) {
  using Fact = vxKilnBase::Fact<TypeParam>;
  const DoubleVec b(4, 1.0);
  Fact fact(this->random(4)), shared(fact);
  const DoubleVec x = shared.solve(b);
  const TypeParam moved(std::move(static_cast<TypeParam&>(fact)));
  const Fact other(this->random(5));
  fact = other;
  EXPECT_EQ(x, shared.solve(b));
  EXPECT_EQ(other.solve(DoubleVec(5, 1.0)), fact.solve(DoubleVec(5, 1.0)));
}
