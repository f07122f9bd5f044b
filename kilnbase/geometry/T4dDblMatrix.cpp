#include <cmath>

#include <kilnbase/geometry/T4dDblMatrix.h>

constinit const T4dDblMatrix T4dDblMatrix::identity;

namespace {

template <class From, class To>
void copyElements(const From (*from)[4], To (*to)[4]) {
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) to[r][c] = static_cast<To>(from[r][c]);
  }
}

}  // namespace

int T4dDblMatrix::equivalent(const T4dDblMatrix& m, double tol) const {
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      if (!(std::fabs(element_[r][c] - m.element_[r][c]) <= tol)) return 0;
    }
  }
  return 1;
}

T4dDblMatrix& T4dDblMatrix::setToAxisRotate(const T4dDblVector& axis, double angle) {
  if (angle == 0.0) return setToIdentity();
  return setToAxisTurn(axis, std::cos(angle), std::sin(angle));
}

T4dDblMatrix& T4dDblMatrix::setToAxisTurn(const T4dDblVector& axis, double cosine, double sine) {
  const auto [x, y, z] = axis;
  const double c = cosine;
  const double s = sine;
  const double t = 1.0 - c;
  return *this = {t * x * x + c,     t * x * y + s * z, t * x * z - s * y,
                  t * x * y - s * z, t * y * y + c,     t * y * z + s * x,
                  t * x * z + s * y, t * y * z - s * x, t * z * z + c};
}

T4dDblMatrix& T4dDblMatrix::axisRotateIt(const T4dDblVector& axis, double angle) {
  if (angle == 0.0) return *this;
  return premultBy(T4dDblMatrix().setToAxisRotate(axis, angle));
}

T4dDblMatrix& T4dDblMatrix::setFromDouble(const double elements[4][4]) {
  copyElements(elements, element_);
  return *this;
}

T4dDblMatrix& T4dDblMatrix::setFromFloat(const float elements[4][4]) {
  copyElements(elements, element_);
  return *this;
}

void T4dDblMatrix::copyToFloat(float elements[4][4]) const {
  copyElements(element_, elements);
}

void T4dDblMatrix::print(std::FILE* file) const {
  for (const auto& row : element_) {
    std::fprintf(file, "%g %g %g %g\n", row[0], row[1], row[2], row[3]);
  }
}
