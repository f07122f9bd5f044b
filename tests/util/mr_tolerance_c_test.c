#include <math.h>
#include <stddef.h>

#include <kilnbase/util/mr_tolerance.h>

#define CHECK(condition)               \
  do {                                 \
    if (!(condition)) return __LINE__; \
  } while (0)

#define CHECK_SETTING(get, set, atStart) \
  CHECK(get() == (atStart));             \
  set((atStart)*2);                      \
  CHECK(get() == (atStart)*2);           \
  set(atStart)

#define CHECK_ANGLE(get, set, degrees)                      \
  CHECK(fabs(get() - degrees_to_radians(degrees)) < 1e-15); \
  set(0.5);                                                 \
  CHECK(fabs(get() - 0.5) < 1e-15);                         \
  set(degrees_to_radians(degrees))

/* Checks every setting at the start, changed and put back, as a C program sees it. Returns the line
 * of the first check that fails, or 0. */
int checkTolerancesFromC(void) {
  CHECK(get_machine_tolerance() == 1e-13);
  CHECK(get_bspline_tolerance() == 1e-06);
  CHECK(get_knot_tolerance() == 1e-09);
  CHECK(get_arc_len_tolerance() == 0.0001);
  CHECK(get_crv_fit_minimum_tolerance() == 5e-05);
  CHECK(get_trim_crv_fit_minimum_tolerance() == 5e-05);
  CHECK(get_minimum_ui_tolerance_for_3Dfit() == 5e-05);
  CHECK(get_parallelity_tolerance() == 4e-05);

  CHECK_SETTING(get_cos_gap, set_cos_gap, 0.001);
  CHECK(get_point_coincident_tol() == 0.01);
  CHECK_SETTING(get_max_continuity_gap, set_max_continuity_gap, 0.01);
  CHECK(get_crv_intersect_tolerance() == 0.02);
  CHECK_SETTING(get_crv_fit_tolerance, set_crv_fit_tolerance, 0.01);
  CHECK_SETTING(get_trim_crv_fit_tolerance, set_trim_crv_fit_tolerance, 0.001);
  CHECK_ANGLE(get_continuity_angle_tolerance, set_continuity_angle_tolerance, 0.1);
  CHECK_SETTING(get_curvature_tolerance, set_curvature_tolerance, 0.1);
  CHECK_SETTING(get_checkpoints, set_checkpoints, 5);
  CHECK_SETTING(get_checkpoint_steptype, set_checkpoint_steptype, 2);
  CHECK_SETTING(get_max_surf_spans, set_max_surf_spans, 100);
  CHECK_SETTING(get_vertex_merge_tolerance, set_vertex_merge_tolerance, 0.01);
  CHECK_SETTING(get_topological_G0, set_tol_topological_G0, 0.01);
  CHECK_ANGLE(get_topological_G1, set_tol_topological_G1, 30.0);
  CHECK_SETTING(get_topological_G2, set_tol_topological_G2, 1.0);
  CHECK_SETTING(get_arc_stepsize_tolerance, set_arc_stepsize_tolerance, 0.01);

  CHECK(MR_zIsUp() && !MR_yIsUp());
  CHECK(getMorlaCurrentWindow() == NULL);
  setMorlaCurrentWindow(&va_coordinate_system);
  CHECK(getMorlaCurrentWindow() == &va_coordinate_system);
  setMorlaCurrentWindow(NULL);
  return 0;
}
