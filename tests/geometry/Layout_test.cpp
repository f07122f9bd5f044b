#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <type_traits>

#include <kilnbase/geometry/T3dDblPoint.h>
#include <kilnbase/geometry/T4dDblMatrix.h>
#include <kilnbase/geometry/T4dDblPoint.h>
#include <kilnbase/geometry/T4dDblVector.h>
#include <kilnbase/geometry/Tangle.h>
#include <kilnbase/geometry/TgenXformMatrix.h>
#include <kilnbase/geometry/Tplane.h>
#include <kilnbase/geometry/TpostXformMatrix.h>
#include <kilnbase/geometry/Tquaternion.h>
#include <kilnbase/geometry/Tscale.h>
#include <kilnbase/geometry/TunitQuaternion.h>
#include <kilnbase/geometry/TxformMatrix.h>

// Values in memory are part of the interface: callers hand them to code that expects doubles.

namespace {

template <class T>
constexpr bool kIsPlain =
    std::is_trivially_copyable_v<T> && !std::is_polymorphic_v<T> && alignof(T) == alignof(double);

static_assert(kIsPlain<T3dDblPoint> && sizeof(T3dDblPoint) == 3 * sizeof(double));
static_assert(kIsPlain<T4dDblVector> && sizeof(T4dDblVector) == 3 * sizeof(double));
static_assert(kIsPlain<T4dDblPoint> && sizeof(T4dDblPoint) == 4 * sizeof(double));
static_assert(kIsPlain<T4dDblMatrix> && sizeof(T4dDblMatrix) == 16 * sizeof(double));
static_assert(kIsPlain<TgenXformMatrix> && sizeof(TgenXformMatrix) == 16 * sizeof(double));
static_assert(kIsPlain<Tquaternion> && sizeof(Tquaternion) == 4 * sizeof(double));
static_assert(kIsPlain<TunitQuaternion> && sizeof(TunitQuaternion) == 4 * sizeof(double));
static_assert(kIsPlain<Tangle> && sizeof(Tangle) == 5 * sizeof(double));
static_assert(std::has_virtual_destructor_v<Tscale> && sizeof(Tscale) == 4 * sizeof(double));
static_assert(std::has_virtual_destructor_v<Tplane> && sizeof(Tplane) == 6 * sizeof(double));
static_assert(!std::is_polymorphic_v<TxformMatrix> && sizeof(TxformMatrix) == 40 * sizeof(double));
static_assert(std::has_virtual_destructor_v<TpostXformMatrix> &&
              sizeof(TpostXformMatrix) == 37 * sizeof(double));

static_assert(offsetof(T3dDblPoint, x) == 0 && offsetof(T3dDblPoint, y) == 8 &&
              offsetof(T3dDblPoint, z) == 16);
static_assert(offsetof(T4dDblVector, x) == 0 && offsetof(T4dDblVector, y) == 8 &&
              offsetof(T4dDblVector, z) == 16);
static_assert(offsetof(T4dDblPoint, x) == 0 && offsetof(T4dDblPoint, y) == 8 &&
              offsetof(T4dDblPoint, z) == 16 && offsetof(T4dDblPoint, w) == 24);
static_assert(offsetof(Tquaternion, w) == 0 && offsetof(Tquaternion, x) == 8 &&
              offsetof(Tquaternion, y) == 16 && offsetof(Tquaternion, z) == 24);

static_assert(std::is_convertible_v<T4dDblVector, T4dDblMatrix>);
static_assert(std::is_base_of_v<T4dDblMatrix, TpostXformMatrix> &&
              !std::is_convertible_v<TpostXformMatrix*, T4dDblMatrix*>);
static_assert(!std::is_constructible_v<TunitQuaternion, Tquaternion>);
static_assert(!std::is_convertible_v<double, Tplane> && !std::is_default_constructible_v<Tplane>);

// What arithmetic allows happens at compile time.
constexpr T4dDblMatrix kScaledAndMoved =
    T4dDblMatrix(Tscale(2, 3, 4)) * T4dDblMatrix(T4dDblVector(1, 2, 3));
static_assert(T3dDblPoint(1, 1, 1) * kScaledAndMoved == T3dDblPoint(3, 5, 7));
static_assert(T4dDblPoint(1, 1, 1, 2) * kScaledAndMoved == T4dDblPoint(4, 7, 10, 2));
static_assert(T4dDblVector(1, 1, 1) * kScaledAndMoved == T4dDblVector(2, 3, 4));

template <class T>
T at(const void* object, std::size_t offset) {
  T value;
  std::memcpy(&value, static_cast<const char*>(object) + offset, sizeof value);
  return value;
}

}  // namespace

TEST(GeometryLayout, FieldsFollowTheVirtualTable) {
  const Tscale scale(2, 3, 4);
  EXPECT_EQ(4.0, at<double>(&scale, 24));
  Tplane plane(T4dDblPoint(0, 0, 5, 1), T4dDblVector(0, 0, 2), 0.5);
  EXPECT_EQ(1.0, at<double>(&plane, 24));
  EXPECT_EQ(-5.0, at<double>(&plane, 32));
  EXPECT_EQ(1e-9, at<double>(&plane, 40));

  TpostXformMatrix post;
  post = T4dDblVector(1, 2, 3);
  post = scale;
  post.setRotatePivotPoint(T4dDblPoint(4, 0, 0, 1)).setScalePivotPoint(T4dDblPoint(5, 0, 0, 1));
  EXPECT_EQ(1.0, at<double>(&post, 8));  // the matrix, still the identity
  EXPECT_EQ(3.0, at<double>(&post, 152));
  EXPECT_EQ(1.0, at<double>(&post, 160));  // the rotation
  EXPECT_EQ(4.0, at<double>(&post, 216));
  EXPECT_EQ(4.0, at<double>(&post, 224));
  EXPECT_EQ(5.0, at<double>(&post, 256));
  EXPECT_EQ(1, at<int>(&post, 288));
}

TEST(GeometryLayout, AnAngleHoldsRadiansDegreesCosineAndSine) {
  const struct {
    Tangle angle;
    int valid;
    std::size_t offset;
    double value;
  } cases[] = {{Tangle(), 7, 24, 1.0},
               {Tangle(20.0), 1, 16, 20.0},
               {Tangle(20L), 1, 16, 20.0},
               {Tangle(0.0, 0.5), 4, 32, 0.5},
               {Tangle(90L), 5, 32, 1.0}};
  for (const auto& test : cases) {
    EXPECT_EQ(test.valid, at<int>(&test.angle, 0));
    EXPECT_EQ(test.value, at<double>(&test.angle, test.offset));
  }
  Tangle angle;
  angle.radians(2.0);
  EXPECT_EQ(2, at<int>(&angle, 0));
  EXPECT_EQ(2.0, at<double>(&angle, 8));
  angle.sin();
  EXPECT_EQ(6, at<int>(&angle, 0));
}

TEST(GeometryLayout, ATransformHoldsItsComponentsAfterTheMatrix) {
  TxformMatrix xform(kScaledAndMoved);
  EXPECT_EQ(3.0, at<double>(&xform, 14 * 8));
  EXPECT_EQ(3.0, at<double>(&xform, 144));
  EXPECT_EQ(1.0, at<double>(&xform, 152));  // the rotation
  EXPECT_EQ(4.0, at<double>(&xform, 208));
  xform.setScalePivotPoint(T4dDblPoint(1, 0, 0, 1));
  xform.setRotatePivotPoint(T4dDblPoint(0, 1, 0, 1));
  const T4dDblVector moves[] = {{0, 3, 0}, {0, -3, 0}, {2, 0, 0}, {-1, 0, 0}};
  EXPECT_EQ(moves[0], at<T4dDblVector>(&xform, 216));
  EXPECT_EQ(moves[1], at<T4dDblVector>(&xform, 240));
  EXPECT_EQ(moves[2], at<T4dDblVector>(&xform, 264));
  EXPECT_EQ(moves[3], at<T4dDblVector>(&xform, 288));
  EXPECT_EQ(1, at<int>(&xform, 312));
}
