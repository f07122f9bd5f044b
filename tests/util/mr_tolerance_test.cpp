#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <utility>

#include <kilnbase/util/mr_tolerance.h>

TEST(Tolerance, GuardedGettersRefuseValuesBelowTheMachineTolerance) {
  const std::pair<double (*)(), void (*)(double)> guarded[] = {
      {get_cos_gap, set_cos_gap},
      {get_max_continuity_gap, set_max_continuity_gap},
      {get_point_coincident_tol, set_max_continuity_gap},
      {get_crv_fit_tolerance, set_crv_fit_tolerance},
      {get_trim_crv_fit_tolerance, set_trim_crv_fit_tolerance},
      {get_topological_G0, set_tol_topological_G0}};
  for (const auto& [get, set] : guarded) {
    set(std::nextafter(1e-13, 0.0));
    EXPECT_EQ(5e-05, get());
    set(1e-13);
    EXPECT_EQ(1e-13, get());
  }
}

TEST(Tolerance, KnotToleranceGrowsWithTheDegreeUpToItsCap) {
  EXPECT_EQ(1e-09, get_knot_tolerance_degree(-1));
  EXPECT_DOUBLE_EQ(1e-06, get_knot_tolerance_degree(3));
  EXPECT_EQ(0.01, get_knot_tolerance_degree(std::numeric_limits<int>::max()));
}

TEST(Tolerance, OneCurvatureToleranceIsSavedAndAnglesAreInRadians) {
  scale_curvature_tolerance(2.0);
  scale_curvature_tolerance(3.0);
  EXPECT_DOUBLE_EQ(0.6, get_curvature_tolerance());
  unscale_curvature_tolerance();
  EXPECT_EQ(0.2, get_curvature_tolerance());
  set_tol_topological_G1(0.5);
  EXPECT_NEAR(0.5, get_topological_G1(), 1e-15);
}

TEST(Tolerance, AnyOtherCoordinateSystemThanZeroHasYUp) {
  for (const int system : {1, -1, 256, 0}) {
    va_coordinate_system = system;
    EXPECT_EQ(system != 0, MR_yIsUp());
    EXPECT_EQ(1.0, MR_get_up_vector()[system == 0 ? 2 : 1]);
  }
}
