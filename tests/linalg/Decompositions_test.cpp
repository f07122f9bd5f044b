// What all decompositions have in common: copying, assigning, swapping, many right-hand sides.
#include <concepts>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <type_traits>
#include <utility>
#include <vector>

#include <kilnbase/linalg/DoubleChDecomp.h>
#include <kilnbase/linalg/DoubleLeastSqQR.h>
#include <kilnbase/linalg/DoubleSVDecomp.h>
#include <kilnbase/linalg/DoubleSymEig.h>
#include <kilnbase/linalg/vecmath.h>

#include "tests/support/MathErrors.h"
#include "tests/support/Matrices.h"

namespace {

using namespace kilntest;
using namespace vxKilnBase;
using testing::AnyOf;
using testing::Each;

// A definite matrix as a decomposition takes it.
template <class T>
auto matrixFor(unsigned n) {
  const DoubleGenMat x = matrixWithCondition(n, n, 10.0, n + 1);
  if constexpr (std::is_constructible_v<T, DoubleSymMat>) {
    return toSymMat(transposeProduct(x, x));
  } else {
    return transposeProduct(x, x);
  }
}

std::vector<int> numbersOf(RecordedMathErrors& errors) {
  std::vector<int> numbers;
  for (const RaisedMathError& error : errors.takeAll()) numbers.push_back(error.number);
  return numbers;
}

// A decomposition of order n whose settings are not the initial ones.
template <class T>
T exampleOf(unsigned n) {
  T result(matrixFor<T>(n));
  if constexpr (requires { result.doPivoting(0); }) result.doPivoting(0);
  if constexpr (requires { result.setTolerance(0.0); }) result.setTolerance(0.1 * n);
  if constexpr (requires { result.computeLeftVecs(0); }) result.computeLeftVecs(0);
  if constexpr (requires { result.computeVecs(0); }) result.computeVecs(0);
  return result;
}

// Everything that members tell, settings included. Views the storage of `d`.
std::vector<double> stateOf(DoubleSVDecomp d) {
  std::vector<double> state = list(d.singularValues());
  for (const DoubleVec& part : {d.eValues(), d.leftVecs().dataVec(), d.rightVecs().dataVec()}) {
    for (const double element : list(part)) state.push_back(element);
  }
  state.push_back(d.numSVsFound());
  state.push_back(d.computeLeftVecs(1));
  return state;
}

std::vector<double> stateOf(DoubleSymEig d) {
  std::vector<double> state = list(d.eigenValues());
  for (const double element : list(d.eigenVecs().dataVec())) state.push_back(element);
  state.push_back(d.good());
  state.push_back(d.computeVecs(1));
  return state;
}

template <class T>
std::vector<double> stateOf(T d) {
  std::vector<double> state = list(d.solve(DoubleVec(d.rows(), 0.0, 1.0)));
  state.push_back(d.rows());
  if constexpr (requires { d.setTolerance(0.0); }) state.push_back(d.setTolerance(0.0));
  state.push_back(d.doPivoting(1));
  return state;
}

template <class T>
class Decompositions : public testing::Test {};
using All =
    testing::Types<DoubleChDecomp, DoubleQRDecomp, DoubleLeastSqQR, DoubleSVDecomp, DoubleSymEig>;
TYPED_TEST_SUITE(Decompositions, All);

TYPED_TEST(Decompositions, EveryWayOfSwappingExchangesEverything) {
  TypeParam a = exampleOf<TypeParam>(3), b(matrixFor<TypeParam>(5));
  const std::vector<double> first = stateOf(a), second = stateOf(b);
  swap(a, b);
  EXPECT_EQ(second, stateOf(a));
  EXPECT_EQ(first, stateOf(b));
  std::swap(a, b);
  EXPECT_EQ(first, stateOf(a));
  std::ranges::swap(a, b);
  EXPECT_EQ(second, stateOf(a));
  EXPECT_EQ(first, stateOf(b));
}

TYPED_TEST(Decompositions, MovedFromIsEmptyAndTakesAnyOther) {
  RecordedMathErrors errors;
  TypeParam a = exampleOf<TypeParam>(3);
  const TypeParam b(matrixFor<TypeParam>(5)), c(std::move(a));
  EXPECT_EQ(stateOf(exampleOf<TypeParam>(3)), stateOf(c));
  numbersOf(errors);
  stateOf(a);  // NOLINT(bugprone-use-after-move): what the test is about
  EXPECT_THAT(numbersOf(errors), Each(kNotFactoredError));
  a = b;
  EXPECT_EQ(stateOf(b), stateOf(a));
  EXPECT_THAT(numbersOf(errors), testing::IsEmpty());
}

TYPED_TEST(Decompositions, AssignmentBetweenSizesIsReportedAndHarmless) {
  RecordedMathErrors errors;
  for (const auto& [to, from] : {std::pair{2U, 5U}, {5U, 2U}, {0U, 3U}, {3U, 0U}}) {
    SCOPED_TRACE(testing::Message() << from << " to " << to);
    TypeParam target = exampleOf<TypeParam>(to);
    const auto elements = stateOf(target).size();
    numbersOf(errors);
    target = exampleOf<TypeParam>(from);
    EXPECT_THAT(numbersOf(errors), Each(AnyOf(kMatrixSizesError, kVectorLengthsError)));
    EXPECT_EQ(elements, stateOf(target).size());
    EXPECT_THAT(numbersOf(errors), Each(kNotFactoredError));
  }
}

TYPED_TEST(Decompositions, AssignmentCopiesElementsAlsoFromTemporaries) {
  TypeParam target(matrixFor<TypeParam>(4) * 2.0);
  const TypeParam view(target), source = exampleOf<TypeParam>(4);
  target = exampleOf<TypeParam>(4);
  EXPECT_EQ(stateOf(source), stateOf(target));
  if constexpr (std::is_base_of_v<DoubleGenMat, TypeParam>) {
    EXPECT_EQ(source.dataVec(), view.dataVec());
  } else if constexpr (requires { view.eigenValues(); }) {
    EXPECT_EQ(source.eigenValues(), view.eigenValues());
  } else {
    EXPECT_EQ(source.singularValues(), view.singularValues());
  }
}

// Would factor what a factoring left.
static_assert(!std::is_constructible_v<DoubleLeastSqQR, DoubleQRDecomp>);

}  // namespace
