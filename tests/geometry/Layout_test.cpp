#include <array>
#include <cstddef>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <type_traits>

#include <kilnbase/geometry/Tangle.h>
#include <kilnbase/geometry/TgenXformMatrix.h>
#include <kilnbase/geometry/Tplane.h>
#include <kilnbase/geometry/TpostXformMatrix.h>
#include <kilnbase/geometry/TxformMatrix.h>

#include "tests/geometry/Values.h"

// Values in memory are part of the interface: callers hand them to code that expects doubles.

namespace {

template <std::size_t kDoubles, class... T>
constexpr bool kArePlain = ((std::is_trivially_copyable_v<T> && !std::is_polymorphic_v<T> &&
                             sizeof(T) == kDoubles * sizeof(double)) &&
                            ...);
template <std::size_t kDoubles, class T>
constexpr bool kIsVirtual = std::has_virtual_destructor_v<T> &&
                            sizeof(T) == sizeof(void*) + kDoubles * sizeof(double);

using Product = decltype(T4dDblMatrix() * T4dDblVector());
static_assert(kArePlain<3, T3dDblPoint, T4dDblVector, Product>);
static_assert(kArePlain<4, T4dDblPoint, Tquaternion, TunitQuaternion>);
static_assert(kArePlain<5, Tangle>);
static_assert(kArePlain<16, T4dDblMatrix, TgenXformMatrix>);
static_assert(kIsVirtual<3, Tscale>);
static_assert(kIsVirtual<5, Tplane>);
static_assert(kIsVirtual<36, TpostXformMatrix>);
static_assert(sizeof(TxformMatrix) == 40 * sizeof(double));

template <std::size_t kCount>
using Doubles = std::array<double, kCount>;
// A column product converts to a matrix only explicitly.
static_assert(!std::is_assignable_v<T4dDblMatrix&, Product>);
static_assert(T4dDblMatrix(Product(T4dDblVector(1, 2, 3)))(3, 1) == 2.0);

// A point with a weight is no operand where a vector is meant.
static_assert(!std::is_invocable_v<std::plus<>, T4dDblVector, T4dDblPoint>);
static_assert(!std::is_invocable_v<std::minus<>, T3dDblPoint, T4dDblPoint>);
static_assert(!std::is_invocable_v<std::multiplies<>, T4dDblMatrix, T4dDblPoint>);

// Products are constant expressions.
constexpr T4dDblMatrix kScaledAndMoved =
    T4dDblMatrix(Tscale(2, 3, 4)) * T4dDblMatrix(T4dDblVector(1, 2, 3));
static_assert(T4dDblPoint(1, 1, 1, 2) * kScaledAndMoved == T4dDblPoint(4, 7, 10, 2));

template <class T>
T at(const void* object, std::size_t offset) {
  T value;
  std::memcpy(&value, static_cast<const char*>(object) + offset, sizeof value);
  return value;
}

}  // namespace

TEST(GeometryLayout, FieldsStandInTheirOrder) {
  Tangle angle;
  angle.degrees(90L);
  EXPECT_EQ(5, at<int>(&angle, 0));  // degrees, and cosine and sine
  angle.radians(2.0);
  EXPECT_EQ((Doubles<4>{2, 90, 0, 1}), at<Doubles<4>>(&angle, 8));
  // The weight of the point does not matter, and the tolerance is replaced.
  const Tplane plane(T4dDblPoint(0, 0, 5, 2), T4dDblVector(0, 0, 2), 0.5);
  EXPECT_EQ((Doubles<5>{0, 0, 1, -5, 1e-9}), at<Doubles<5>>(&plane, 8));

  TpostXformMatrix post;
  post = T4dDblVector(1, 2, 3);
  post.setRotatePivotPoint(T4dDblPoint(4, 0, 0, 1)).setScalePivotPoint(T4dDblPoint(5, 0, 0, 1));
  EXPECT_EQ(T4dDblVector(1, 2, 3), at<T4dDblVector>(&post, 136));
  EXPECT_EQ((Doubles<8>{4, 0, 0, 1, 5, 0, 0, 1}), at<Doubles<8>>(&post, 224));
  EXPECT_EQ(1, at<int>(&post, 288));

  TxformMatrix xform(kScaledAndMoved);
  xform.setScalePivotPoint(T4dDblPoint(1, 0, 0, 1)).setRotatePivotPoint(T4dDblPoint(0, 1, 0, 1));
  EXPECT_EQ(T4dDblVector(1, 2, 3), at<T4dDblVector>(&xform, 128));
  const Doubles<15> fromScale{2, 3, 4, 0, 3, 0, 0, -3, 0, 2, 0, 0, -1, 0, 0};
  EXPECT_EQ(fromScale, at<Doubles<15>>(&xform, 192));
  EXPECT_EQ(1, at<int>(&xform, 312));
}
