/* The modelling settings of the process: tolerances, fitting limits, checkpoints, the up axis and
 * the current window.
 *
 * The application changes the settings when the user edits the construction options; the geometry
 * code reads them. Lengths are in model units. Angles are passed and returned in radians and stored
 * in degrees. No setter checks its argument. Instead, the getters marked "guarded" return 5e-05,
 * the minimum fit tolerance, while the stored value is below the machine tolerance.
 *
 * Nothing is locked: the settings are for the application's main thread.
 */
#ifndef KILNBASE_UTIL_MR_TOLERANCE_H
#define KILNBASE_UTIL_MR_TOLERANCE_H

#include <stdbool.h>
#include <stdint.h>

#include <kilnbase/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The tolerances that never change: 1e-13, 1e-06 and 1e-09. */
KILNBASE_API double get_machine_tolerance(void);
KILNBASE_API double get_bspline_tolerance(void);
KILNBASE_API double get_knot_tolerance(void);
/** The knot tolerance times 10 to the power `n` (1 for n below 0), at most 0.01. */
KILNBASE_API double get_knot_tolerance_degree(int n);

KILNBASE_API double get_arc_len_tolerance(void);              /**< 0.0001 */
KILNBASE_API double get_crv_fit_minimum_tolerance(void);      /**< 5e-05 */
KILNBASE_API double get_trim_crv_fit_minimum_tolerance(void); /**< 5e-05 */
KILNBASE_API double get_minimum_ui_tolerance_for_3Dfit(void); /**< 5e-05 */
KILNBASE_API double get_parallelity_tolerance(void);          /**< 4e-05 */

/** Guarded; 0.001 at the start. */
KILNBASE_API double get_cos_gap(void);
KILNBASE_API void set_cos_gap(double gap);

/** The largest gap between continuous curves or surfaces. Guarded; 0.01 at the start. */
KILNBASE_API double get_max_continuity_gap(void);
KILNBASE_API void set_max_continuity_gap(double gap);
/** The distance below which points coincide: the same as `get_max_continuity_gap`. */
KILNBASE_API double get_point_coincident_tol(void);

/** Guarded; 0.01 at the start. */
KILNBASE_API double get_crv_fit_tolerance(void);
KILNBASE_API void set_crv_fit_tolerance(double tolerance);
/** Twice the stored curve fit tolerance, not guarded. */
KILNBASE_API double get_crv_intersect_tolerance(void);

/** The fit tolerance of trimmed curves. Guarded; 0.001 at the start. */
KILNBASE_API double get_trim_crv_fit_tolerance(void);
KILNBASE_API void set_trim_crv_fit_tolerance(double tolerance);

/** The largest angle between continuous tangents; 0.1 degrees at the start. */
KILNBASE_API double get_continuity_angle_tolerance(void);
KILNBASE_API void set_continuity_angle_tolerance(double radians);

/** 0.1 at the start. */
KILNBASE_API double get_curvature_tolerance(void);
KILNBASE_API void set_curvature_tolerance(double tolerance);
/** Saves the curvature tolerance, then multiplies it by `factor`. Kept as it is: there is room for
 * one saved value, so a second call before `unscale_curvature_tolerance` saves the tolerance that
 * the first call scaled. */
KILNBASE_API void scale_curvature_tolerance(double factor);
/** Restores the saved curvature tolerance, 0.1 when none was saved. */
KILNBASE_API void unscale_curvature_tolerance(void);

/** Checkpoints; 5 at the start. */
KILNBASE_API int32_t get_checkpoints(void);
KILNBASE_API void set_checkpoints(int32_t count);
/** 2 at the start. */
KILNBASE_API int32_t get_checkpoint_steptype(void);
KILNBASE_API void set_checkpoint_steptype(int32_t type);

/** The most spans of a fitted surface; 100 at the start. */
KILNBASE_API int32_t get_max_surf_spans(void);
KILNBASE_API void set_max_surf_spans(int32_t spans);

/** The distance below which vertices are merged; 0.01 at the start. */
KILNBASE_API double get_vertex_merge_tolerance(void);
KILNBASE_API void set_vertex_merge_tolerance(double tolerance);

/** The tolerance of topological continuity in position. Guarded; 0.01 at the start. */
KILNBASE_API double get_topological_G0(void);
KILNBASE_API void set_tol_topological_G0(double tolerance);
/** The angle for topological continuity of tangents; 30 degrees at the start. */
KILNBASE_API double get_topological_G1(void);
KILNBASE_API void set_tol_topological_G1(double radians);
/** The tolerance of topological continuity in curvature; 1 at the start. */
KILNBASE_API double get_topological_G2(void);
KILNBASE_API void set_tol_topological_G2(double tolerance);

/** 0.01 at the start. */
KILNBASE_API double get_arc_stepsize_tolerance(void);
KILNBASE_API void set_arc_stepsize_tolerance(double tolerance);

/** The product with a constant, correct to rounding. */
KILNBASE_API double degrees_to_radians(double degrees);
KILNBASE_API double radians_to_degrees(double radians);

/** The up axis, written by the application: 0 when Z is up, anything else when Y is. */
KILNBASE_API extern int32_t va_coordinate_system;

/** What `va_coordinate_system` says. */
KILNBASE_API bool MR_yIsUp(void);
KILNBASE_API bool MR_zIsUp(void);
/** The unit vector of the up axis: three doubles that stay as they are when the axis changes. */
KILNBASE_API const double* MR_get_up_vector(void);

/** The application's current window, stored for the application; null at the start. */
KILNBASE_API void* getMorlaCurrentWindow(void);
KILNBASE_API void setMorlaCurrentWindow(void* window);

#ifdef __cplusplus
}
#endif

#endif
