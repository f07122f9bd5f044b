#include <glm/glm.hpp>
#include <glm/gtc/quaternion.hpp>
#include <glm/gtc/type_ptr.hpp>

#include "geometry/Ways.h"

namespace bench::geometry {

namespace {

// Its columns are our rows, so the product of A and B is its product of B and A.
struct Glm {
  static glm::dmat4 matrix(const double* numbers) { return glm::make_mat4(numbers); }
  static constexpr auto transform = matrix;
  static glm::dmat3 corner(const double* numbers) { return glm::dmat3(matrix(numbers)); }
  static glm::dvec3 point(const double* numbers) { return glm::make_vec3(numbers); }
  static constexpr auto vector = point;
  static glm::dquat quaternion(const double* n) { return {n[0], n[1], n[2], n[3]}; }

  static void append(Values& values, const glm::dmat4& m) {
    values.insert(values.end(), glm::value_ptr(m), glm::value_ptr(m) + 16);
  }
  static void append(Values& values, const glm::dvec3& v) {
    values.insert(values.end(), {v.x, v.y, v.z});
  }
  static void append(Values& values, const glm::dquat& q) {
    values.insert(values.end(), {q.w, q.x, q.y, q.z});
  }

  static auto product(const glm::dmat4& a, const glm::dmat4& b) { return b * a; }
  static auto product(const glm::dquat& p, const glm::dquat& q) { return p * q; }
  static auto inverse(const glm::dmat4& m) { return glm::inverse(m); }
  static auto determinant(const glm::dmat3& m) { return glm::determinant(m); }
  static auto transformPoint(const glm::dvec3& p, const glm::dmat4& m) {
    return glm::dvec3(m * glm::dvec4(p, 1.0));
  }
  static auto transformVector(const glm::dvec3& v, const glm::dmat4& m) {
    return glm::dmat3(m) * v;
  }
  static auto normalised(const auto& v) { return glm::normalize(v); }
  static auto toMatrix(const glm::dquat& q) { return glm::mat4_cast(q); }
};

}  // namespace

std::vector<Way> glmWays() {
  return waysOf<Glm>();
}

}  // namespace bench::geometry
