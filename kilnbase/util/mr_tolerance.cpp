#include <algorithm>
#include <cstdint>

#include <kilnbase/util/mr_tolerance.h>

namespace {

constexpr double kMachineTolerance = 1e-13;
constexpr double kBsplineTolerance = 1e-06;
constexpr double kKnotTolerance = 1e-09;
constexpr double kLargestKnotTolerance = 0.01;
constexpr double kMinimumFitTolerance = 5e-05;

constinit double cosGap = 0.001;
constinit double maxContinuityGap = 0.01;
constinit double crvFitTolerance = 0.01;
constinit double trimCrvFitTolerance = 0.001;
constinit double continuityAngleDegrees = 0.1;
constinit double curvatureTolerance = 0.1;
constinit double savedCurvatureTolerance = 0.1;
constinit std::int32_t checkpoints = 5;
constinit std::int32_t maxSurfSpans = 100;
constinit double vertexMergeTolerance = 0.01;
constinit double topologicalG0 = 0.01;
constinit double topologicalG1Degrees = 30.0;
constinit double topologicalG2 = 1.0;
constinit std::int32_t checkpointStepType = 2;
constinit double arcStepSizeTolerance = 0.01;
constinit void* currentWindow = nullptr;

double guarded(double tolerance) {
  return kMachineTolerance > tolerance ? kMinimumFitTolerance : tolerance;
}

}  // namespace

constinit std::int32_t va_coordinate_system = 0;

double get_machine_tolerance() {
  return kMachineTolerance;
}

double get_bspline_tolerance() {
  return kBsplineTolerance;
}

double get_knot_tolerance() {
  return kKnotTolerance;
}

double get_knot_tolerance_degree(int n) {
  double factor = 1.0;
  for (; n > 0 && kKnotTolerance * factor < kLargestKnotTolerance; --n) factor *= 10.0;
  return std::min(kKnotTolerance * factor, kLargestKnotTolerance);
}

double get_arc_len_tolerance() {
  return 0.0001;
}

double get_crv_fit_minimum_tolerance() {
  return kMinimumFitTolerance;
}

double get_trim_crv_fit_minimum_tolerance() {
  return kMinimumFitTolerance;
}

double get_minimum_ui_tolerance_for_3Dfit() {
  return kMinimumFitTolerance;
}

double get_parallelity_tolerance() {
  return 4e-05;
}

double get_cos_gap() {
  return guarded(cosGap);
}

void set_cos_gap(double gap) {
  cosGap = gap;
}

double get_max_continuity_gap() {
  return guarded(maxContinuityGap);
}

void set_max_continuity_gap(double gap) {
  maxContinuityGap = gap;
}

double get_point_coincident_tol() {
  return get_max_continuity_gap();
}

double get_crv_fit_tolerance() {
  return guarded(crvFitTolerance);
}

void set_crv_fit_tolerance(double tolerance) {
  crvFitTolerance = tolerance;
}

double get_crv_intersect_tolerance() {
  return 2.0 * crvFitTolerance;
}

double get_trim_crv_fit_tolerance() {
  return guarded(trimCrvFitTolerance);
}

void set_trim_crv_fit_tolerance(double tolerance) {
  trimCrvFitTolerance = tolerance;
}

double get_continuity_angle_tolerance() {
  return degrees_to_radians(continuityAngleDegrees);
}

void set_continuity_angle_tolerance(double radians) {
  continuityAngleDegrees = radians_to_degrees(radians);
}

double get_curvature_tolerance() {
  return curvatureTolerance;
}

void set_curvature_tolerance(double tolerance) {
  curvatureTolerance = tolerance;
}

void scale_curvature_tolerance(double factor) {
  savedCurvatureTolerance = curvatureTolerance;
  curvatureTolerance *= factor;
}

void unscale_curvature_tolerance() {
  curvatureTolerance = savedCurvatureTolerance;
}

std::int32_t get_checkpoints() {
  return checkpoints;
}

void set_checkpoints(std::int32_t count) {
  checkpoints = count;
}

std::int32_t get_checkpoint_steptype() {
  return checkpointStepType;
}

void set_checkpoint_steptype(std::int32_t type) {
  checkpointStepType = type;
}

std::int32_t get_max_surf_spans() {
  return maxSurfSpans;
}

void set_max_surf_spans(std::int32_t spans) {
  maxSurfSpans = spans;
}

double get_vertex_merge_tolerance() {
  return vertexMergeTolerance;
}

void set_vertex_merge_tolerance(double tolerance) {
  vertexMergeTolerance = tolerance;
}

double get_topological_G0() {
  return guarded(topologicalG0);
}

void set_tol_topological_G0(double tolerance) {
  topologicalG0 = tolerance;
}

double get_topological_G1() {
  return degrees_to_radians(topologicalG1Degrees);
}

void set_tol_topological_G1(double radians) {
  topologicalG1Degrees = radians_to_degrees(radians);
}

double get_topological_G2() {
  return topologicalG2;
}

void set_tol_topological_G2(double tolerance) {
  topologicalG2 = tolerance;
}

double get_arc_stepsize_tolerance() {
  return arcStepSizeTolerance;
}

void set_arc_stepsize_tolerance(double tolerance) {
  arcStepSizeTolerance = tolerance;
}

double degrees_to_radians(double degrees) {
  return degrees * 0.017453292519943295;
}

double radians_to_degrees(double radians) {
  return radians * 57.29577951308232;
}

bool MR_yIsUp() {
  return va_coordinate_system != 0;
}

bool MR_zIsUp() {
  return va_coordinate_system == 0;
}

const double* MR_get_up_vector() {
  static constexpr double kY[] = {0.0, 1.0, 0.0};
  static constexpr double kZ[] = {0.0, 0.0, 1.0};
  return MR_yIsUp() ? kY : kZ;
}

void* getMorlaCurrentWindow() {
  return currentWindow;
}

void setMorlaCurrentWindow(void* window) {
  currentWindow = window;
}
