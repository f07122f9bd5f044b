#include <Eigen/Geometry>

#include "geometry/Ways.h"

namespace bench::geometry {

namespace {

// Its columns are our rows, so the product of A and B is its product of B and A.
struct EigenTypes {
  using Matrix = Eigen::Matrix4d;
  using Vector = Eigen::Vector3d;
  using Quaternion = Eigen::Quaterniond;

  static Matrix matrix(const double* numbers) { return Eigen::Map<const Matrix>(numbers); }
  static Eigen::Affine3d transform(const double* numbers) {
    return Eigen::Affine3d(matrix(numbers));
  }
  static Eigen::Matrix3d corner(const double* numbers) {
    return matrix(numbers).topLeftCorner<3, 3>();
  }
  static Vector point(const double* numbers) { return Eigen::Map<const Vector>(numbers); }
  static constexpr auto vector = point;
  static Quaternion quaternion(const double* n) { return {n[0], n[1], n[2], n[3]}; }

  static void append(Values& values, const Matrix& m) {
    values.insert(values.end(), m.data(), m.data() + 16);
  }
  static void append(Values& values, const Vector& v) {
    values.insert(values.end(), v.data(), v.data() + 3);
  }
  static void append(Values& values, const Quaternion& q) {
    values.insert(values.end(), {q.w(), q.x(), q.y(), q.z()});
  }

  static Matrix product(const Matrix& a, const Matrix& b) { return b * a; }
  static Quaternion product(const Quaternion& p, const Quaternion& q) { return p * q; }
  static Matrix inverse(const Matrix& m) { return m.inverse(); }
  static double determinant(const Eigen::Matrix3d& m) { return m.determinant(); }
  static Vector transformPoint(const Vector& p, const Eigen::Affine3d& m) { return m * p; }
  static Vector transformVector(const Vector& v, const Eigen::Affine3d& m) {
    return m.linear() * v;
  }
  static Vector normalised(const Vector& v) { return v.normalized(); }
  static Quaternion normalised(const Quaternion& q) { return q.normalized(); }
  static Matrix toMatrix(const Quaternion& q) { return Eigen::Affine3d(q).matrix(); }
};

}  // namespace

std::vector<Way> eigenWays() {
  return waysOf<EigenTypes>();
}

}  // namespace bench::geometry
