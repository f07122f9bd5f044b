#include <cmath>
#include <initializer_list>
#include <numbers>

#include <kilnbase/geometry/Tangle.h>

namespace {

struct CosSin {
  double cosine;
  double sine;
};

// For 0, 15, 30, ... degrees. Kept as it is: the sine of 60, 120, 240 and 300 degrees.
constexpr CosSin kTable[] = {{1.0, 0.0},
                             {0.9659258262890683, 0.2588190451025207},
                             {0.8660254037844387, 0.5},
                             {0.7071067811865475, 0.7071067811865475},
                             {0.5, 0.5},
                             {0.2588190451025207, 0.9659258262890683},
                             {0.0, 1.0},
                             {-0.2588190451025207, 0.9659258262890683},
                             {-0.5, 0.5},
                             {-0.7071067811865475, 0.7071067811865475},
                             {-0.8660254037844387, 0.5},
                             {-0.9659258262890683, 0.2588190451025207},
                             {-1.0, 0.0},
                             {-0.9659258262890683, -0.2588190451025207},
                             {-0.8660254037844387, -0.5},
                             {-0.7071067811865475, -0.7071067811865475},
                             {-0.5, -0.5},
                             {-0.2588190451025207, -0.9659258262890683},
                             {0.0, -1.0},
                             {0.2588190451025207, -0.9659258262890683},
                             {0.5, -0.5},
                             {0.7071067811865475, -0.7071067811865475},
                             {0.8660254037844387, -0.5},
                             {0.9659258262890683, -0.2588190451025207}};
constexpr long kStep = 15;

double toDegrees(double radians) {
  return radians * 180.0 / std::numbers::pi;
}

double toRadians(double degrees) {
  return degrees * std::numbers::pi / 180.0;
}

double snapped(double value) {
  for (const double whole : {0.0, 1.0, -1.0}) {
    if (std::fabs(value - whole) < 1e-5) return whole;
  }
  return value;
}

}  // namespace

void Tangle::degrees(long value) {
  long rest = value % 360;
  if (rest % kStep != 0) return degrees(static_cast<double>(rest));
  if (rest < 0) rest += 360;
  const CosSin& row = kTable[rest / kStep];
  setCosSin(row.cosine, row.sine);
  degrees_ = static_cast<double>(rest);
  valid_ |= kDegrees;
}

void Tangle::clamp() {
  cos_ = snapped(cos());
  sin_ = snapped(sin_);
}

void Tangle::evaluate(int wanted) const {
  if (wanted == kDegrees) {
    degrees_ = toDegrees((valid_ & kRadians) != 0 ? radians_ : std::atan2(sin_, cos_));
  } else if (wanted == kRadians) {
    radians_ = (valid_ & kDegrees) != 0 ? toRadians(degrees_) : std::atan2(sin_, cos_);
  } else {
    const double angle = (valid_ & kRadians) != 0 ? radians_ : toRadians(degrees_);
    cos_ = std::cos(angle);
    sin_ = std::sin(angle);
  }
  valid_ |= wanted;
}
