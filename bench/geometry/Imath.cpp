#include <Imath/ImathMatrix.h>
#include <Imath/ImathQuat.h>
#include <Imath/ImathVec.h>
#include <algorithm>

#include "geometry/Ways.h"

namespace bench::geometry {

namespace {

using namespace Imath;

struct ImathTypes {
  static M44d matrix(const double* numbers) {
    M44d m;
    std::copy_n(numbers, 16, m.getValue());
    return m;
  }
  static constexpr auto transform = matrix;
  static M33d corner(const double* n) {
    return {n[0], n[1], n[2], n[4], n[5], n[6], n[8], n[9], n[10]};
  }
  static V3d point(const double* n) { return {n[0], n[1], n[2]}; }
  static constexpr auto vector = point;
  static Quatd quaternion(const double* n) { return {n[0], n[1], n[2], n[3]}; }

  static void append(Values& values, const M44d& m) {
    values.insert(values.end(), m.getValue(), m.getValue() + 16);
  }
  static void append(Values& values, const V3d& v) { values.insert(values.end(), {v.x, v.y, v.z}); }
  static void append(Values& values, const Quatd& q) {
    values.insert(values.end(), {q.r, q.v.x, q.v.y, q.v.z});
  }

  static auto product(const auto& a, const auto& b) { return a * b; }
  static auto inverse(const M44d& m) { return m.gjInverse(); }
  static auto determinant(const M33d& m) { return m.determinant(); }
  static auto transformPoint(const V3d& p, const M44d& m) { return p * m; }
  static auto transformVector(const V3d& v, const M44d& m) {
    V3d result;
    m.multDirMatrix(v, result);
    return result;
  }
  static auto normalised(const auto& v) { return v.normalized(); }
  static auto toMatrix(const Quatd& q) { return q.toMatrix44(); }
};

}  // namespace

std::vector<Way> imathWays() {
  return waysOf<ImathTypes>();
}

}  // namespace bench::geometry
