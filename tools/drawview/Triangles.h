// Polygons as triangles.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include <vx/Containers.h>
#include <vx/Linear.h>

namespace drawview {

/// The indices of three vertices.
using Triangle = std::array<std::uint32_t, 3>;

/// Cuts a polygon of n vertices, at least three, into n - 2 triangles that turn as the polygon
/// does. Concave polygons of at most 128 vertices that are nearly flat are cut along diagonals
/// inside them (by clipping ears), in O(n³) at worst; all others into a fan. Coordinates may be any
/// numbers.
std::vector<Triangle> trianglesOf(const vx::vector<std::uint32_t>& polygon,
                                  const vx::vector<vxLinear::Point>& vertices);

}  // namespace drawview
