// Points, vectors and lines of space.
#pragma once

#include <vx/export.h>

namespace vxLinear {

/// A direction with a length, or the way from one point to another.
struct VX_API Vector {
  /// Components in the unit of the model.
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;

  friend bool operator==(const Vector&, const Vector&) = default;
};

/// A place in space.
struct VX_API Point {
  /// Coordinates in the unit of the model.
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;

  friend bool operator==(const Point&, const Point&) = default;
  /// The point moved by the vector.
  friend Point operator+(const Point& p, const Vector& v) {
    return {p.x + v.x, p.y + v.y, p.z + v.z};
  }
  /// The way from `b` to `a`.
  friend Vector operator-(const Point& a, const Point& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
  }
};

/// A point of the plane, such as the parameters of a point on a surface.
struct VX_API Point2 {
  /// Coordinates.
  double u = 0.0;
  double v = 0.0;

  friend bool operator==(const Point2&, const Point2&) = default;
};

/// The line of all points origin + t * direction. The direction has any length.
///
///     const vxLinear::ParamLine line({1.0, 0.0, 0.0}, {0.0, 2.0, 0.0});
///     const vxLinear::Point p = line.at(0.5);  // (1, 1, 0)
class VX_API ParamLine {
 public:
  ParamLine() = default;
  /// A direction of length 0 is allowed: all points are the origin then.
  ParamLine(const Point& origin, const Vector& direction)
      : origin_(origin), direction_(direction) {}

  /// As given to the constructor; zeros in a default line.
  const Point& origin() const { return origin_; }
  const Vector& direction() const { return direction_; }
  /// The point origin + t * direction.
  Point at(double t) const {
    return origin_ + Vector{t * direction_.x, t * direction_.y, t * direction_.z};
  }

  friend bool operator==(const ParamLine&, const ParamLine&) = default;

 private:
  Point origin_;
  Vector direction_;
};

}  // namespace vxLinear
