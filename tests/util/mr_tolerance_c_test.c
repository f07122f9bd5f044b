#include <math.h>
#include <stddef.h>

#include <kilnbase/util/mr_tolerance.h>

#define CHECK(condition)               \
  do {                                 \
    if (!(condition)) return __LINE__; \
  } while (0)

/* Uses the settings as a C program does. Returns the line of the first check that fails, or 0. */
int checkTolerancesFromC(void) {
  CHECK(get_bspline_tolerance() == 1e-06);
  CHECK(get_parallelity_tolerance() == 4e-05);
  CHECK(fabs(get_topological_G1() - degrees_to_radians(30.0)) < 1e-15);
  set_tol_topological_G1(0.5);
  CHECK(fabs(get_topological_G1() - 0.5) < 1e-15);
  set_tol_topological_G1(degrees_to_radians(30.0));
  CHECK(MR_zIsUp() && !MR_yIsUp());
  CHECK(getMorlaCurrentWindow() == NULL);
  return 0;
}
