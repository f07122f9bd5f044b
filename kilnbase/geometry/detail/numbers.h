// The numbers that the text of a value consists of.
#pragma once

#include <array>

#include <kilnbase/geometry/T3dDblPoint.h>
#include <kilnbase/geometry/T4dDblPoint.h>
#include <kilnbase/geometry/Tplane.h>
#include <kilnbase/geometry/Tquaternion.h>
#include <kilnbase/geometry/Tscale.h>

namespace vxKilnBase::detail {

constexpr std::array<double, 3> numbersOf(const T3dDblPoint& p) {
  return {p.x, p.y, p.z};
}
constexpr std::array<double, 4> numbersOf(const T4dDblPoint& p) {
  return {p.x, p.y, p.z, p.w};
}
constexpr std::array<double, 3> numbersOf(const T4dDblVector& v) {
  return {v.x, v.y, v.z};
}
constexpr std::array<double, 3> numbersOf(const Tscale& s) {
  return {s.x, s.y, s.z};
}
constexpr std::array<double, 4> numbersOf(const Tplane& p) {
  return {p.a, p.b, p.c, p.d};
}
constexpr std::array<double, 4> numbersOf(const Tquaternion& q) {
  return {q.w, q.x, q.y, q.z};
}

}  // namespace vxKilnBase::detail
