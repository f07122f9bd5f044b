#include <kilnbase/geometry/T4dDblMatrix.h>
#include <kilnbase/geometry/TunitQuaternion.h>

#include "geometry/Ways.h"

namespace bench::geometry {

namespace {

struct Ours {
  static T4dDblMatrix matrix(const double* numbers) {
    T4dDblMatrix m;
    for (int i = 0; i < 16; ++i) m[static_cast<std::size_t>(i / 4)][i % 4] = numbers[i];
    return m;
  }
  static constexpr auto corner = matrix;
  static constexpr auto transform = matrix;
  static T3dDblPoint point(const double* n) { return {n[0], n[1], n[2]}; }
  static T4dDblVector vector(const double* n) { return {n[0], n[1], n[2]}; }
  static Tquaternion quaternion(const double* n) {
    Tquaternion q;
    q.w = n[0];
    q.x = n[1];
    q.y = n[2];
    q.z = n[3];
    return q;
  }

  static void append(Values& values, const T4dDblMatrix& m) {
    values.insert(values.end(), m[0], m[0] + 16);
  }
  static void append(Values& values, const T4dDblVector& v) {
    values.insert(values.end(), {v.x, v.y, v.z});
  }
  static void append(Values& values, const Tquaternion& q) {
    values.insert(values.end(), {q.w, q.x, q.y, q.z});
  }

  static auto product(const auto& a, const auto& b) { return a * b; }
  static auto inverse(const T4dDblMatrix& m) { return m.inverse(); }
  static auto determinant(const T4dDblMatrix& m) { return m.det3x3(); }
  static auto transformPoint(const T3dDblPoint& p, const T4dDblMatrix& m) { return p * m; }
  static auto transformVector(const T4dDblVector& v, const T4dDblMatrix& m) { return v * m; }
  static auto normalised(const T4dDblVector& v) { return v.getNormal(); }
  static auto normalised(const Tquaternion& q) { return q.normalize(); }
  static T4dDblMatrix toMatrix(const TunitQuaternion& q) { return q; }
};

}  // namespace

std::vector<Way> ourWays() {
  return waysOf<Ours>();
}

}  // namespace bench::geometry
