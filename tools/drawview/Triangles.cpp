#include "tools/drawview/Triangles.h"

#include <cstddef>

namespace drawview {

using vxLinear::Point;
using vxLinear::Vector;

namespace {

constexpr std::size_t kMostClipped = 128;

Vector cross(const Vector& a, const Vector& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

double dot(const Vector& a, const Vector& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

// A polygon that loses its corners until it is a triangle.
class Polygon {
 public:
  Polygon(const vx::vector<std::uint32_t>& corners, const vx::vector<Point>& vertices)
      : corners_(corners.begin(), corners.end()), vertices_(vertices), normal_(findNormal()) {}

  std::size_t size() const { return corners_.size(); }
  // The corner k and its neighbours.
  Triangle corner(std::size_t k) const {
    return {corners_[(k + size() - 1) % size()], corners_[k], corners_[(k + 1) % size()]};
  }
  void remove(std::size_t k) { corners_.erase(corners_.begin() + static_cast<std::ptrdiff_t>(k)); }

  bool isConvex() const {
    for (std::size_t k = 0; k < size(); ++k)
      if (area(corner(k)) < 0.0) return false;
    return true;
  }

  // Whether the diagonal that cuts off the corner k lies inside.
  bool isEar(std::size_t k) const {
    const Triangle ear = corner(k);
    if (!(area(ear) > 0.0)) return false;
    for (const std::uint32_t each : corners_)
      if (each != ear[0] && each != ear[1] && each != ear[2] && isInside(each, ear)) return false;
    return true;
  }

 private:
  const Point& at(std::uint32_t vertex) const { return vertices_[vertex]; }

  // Twice the signed areas of all triangles of a fan together.
  Vector findNormal() const {
    Vector sum;
    for (std::size_t k = 1; k + 1 < size(); ++k) {
      const Vector part =
          cross(at(corners_[k]) - at(corners_[0]), at(corners_[k + 1]) - at(corners_[0]));
      sum = {sum.x + part.x, sum.y + part.y, sum.z + part.z};
    }
    return sum;
  }

  // Above 0 for a triangle that turns as the polygon does.
  double area(const Triangle& t) const {
    return dot(cross(at(t[1]) - at(t[0]), at(t[2]) - at(t[0])), normal_);
  }
  bool isInside(std::uint32_t vertex, const Triangle& t) const {
    return area({t[0], t[1], vertex}) >= 0.0 && area({t[1], t[2], vertex}) >= 0.0 &&
           area({t[2], t[0], vertex}) >= 0.0;
  }

  std::vector<std::uint32_t> corners_;
  const vx::vector<Point>& vertices_;
  Vector normal_;
};

}  // namespace

std::vector<Triangle> trianglesOf(const vx::vector<std::uint32_t>& polygon,
                                  const vx::vector<Point>& vertices) {
  std::vector<Triangle> triangles;
  triangles.reserve(polygon.size() - 2);
  Polygon rest(polygon, vertices);
  if (rest.size() > kMostClipped || rest.isConvex()) {
    for (std::size_t k = 1; k + 1 < polygon.size(); ++k)
      triangles.push_back({polygon[0], polygon[k], polygon[k + 1]});
    return triangles;
  }
  while (rest.size() > 2) {
    std::size_t ear = 0;
    while (ear < rest.size() && !rest.isEar(ear)) ++ear;
    if (ear == rest.size()) ear = 1;  // crossing sides, or no area
    triangles.push_back(rest.corner(ear));
    rest.remove(ear);
  }
  return triangles;
}

}  // namespace drawview
