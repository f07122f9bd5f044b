#include <algorithm>
#include <cmath>
#include <utility>

#include <kilnbase/geometry/T4dDblMatrix.h>

constinit const T4dDblMatrix T4dDblMatrix::identity;

int T4dDblMatrix::equivalent(const T4dDblMatrix& m, double tol) const {
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      if (!(std::fabs(element_[r][c] - m.element_[r][c]) <= tol)) return 0;
    }
  }
  return 1;
}

T4dDblMatrix& T4dDblMatrix::invertIt() {
  T4dDblMatrix companion;
  for (int column = 0; column < 4; ++column) {
    int pivotRow = column;
    for (int r = column + 1; r < 4; ++r) {
      const double candidate = element_[r][column];
      const double pivot = element_[pivotRow][column];
      if (candidate * candidate > pivot * pivot) pivotRow = r;
    }
    std::swap(element_[column], element_[pivotRow]);
    std::swap(companion.element_[column], companion.element_[pivotRow]);
    const double pivot = element_[column][column];
    for (int c = 0; c < 4; ++c) {
      element_[column][c] /= pivot;
      companion.element_[column][c] /= pivot;
    }
    for (int r = 0; r < 4; ++r) {
      if (r == column) continue;
      const double factor = element_[r][column];
      for (int c = 0; c < 4; ++c) {
        element_[r][c] -= factor * element_[column][c];
        companion.element_[r][c] -= factor * companion.element_[column][c];
      }
    }
  }
  return *this = companion;
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
  const double elements[4][4] = {{t * x * x + c, t * x * y + s * z, t * x * z - s * y, 0.0},
                                 {t * x * y - s * z, t * y * y + c, t * y * z + s * x, 0.0},
                                 {t * x * z + s * y, t * y * z - s * x, t * z * z + c, 0.0},
                                 {0.0, 0.0, 0.0, 1.0}};
  return setFromDouble(elements);
}

T4dDblMatrix& T4dDblMatrix::axisRotateIt(const T4dDblVector& axis, double angle) {
  if (angle == 0.0) return *this;
  return premultBy(T4dDblMatrix().setToAxisRotate(axis, angle));
}

T4dDblMatrix& T4dDblMatrix::setFromDouble(const double elements[4][4]) {
  std::copy_n(elements[0], 16, element_[0]);
  return *this;
}

T4dDblMatrix& T4dDblMatrix::setFromFloat(const float elements[4][4]) {
  std::copy_n(elements[0], 16, element_[0]);
  return *this;
}

void T4dDblMatrix::copyToFloat(float elements[4][4]) const {
  std::transform(element_[0], element_[0] + 16, elements[0],
                 [](double element) { return static_cast<float>(element); });
}

void T4dDblMatrix::print(std::FILE* file) const {
  for (const auto& row : element_) {
    std::fprintf(file, "%g %g %g %g\n", row[0], row[1], row[2], row[3]);
  }
}
