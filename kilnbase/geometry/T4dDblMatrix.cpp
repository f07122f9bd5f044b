#include <cmath>
#include <utility>

#include <kilnbase/geometry/T4dDblMatrix.h>

constinit const T4dDblMatrix T4dDblMatrix::identity;

namespace {

template <class From, class To>
void copyElements(const From (*from)[4], To (*to)[4]) {
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) to[r][c] = static_cast<To>(from[r][c]);
  }
}

// A row of the matrix and its companion during Gauss-Jordan elimination. Both share the storage. In
// the cleared columns the matrix is the identity: there stands the companion. In the other columns
// the companion is the identity: there stands the matrix. Rows are separate variables, passed one
// by one, so that compilers keep all of them in registers.
struct Row {
  Row(const double* elements, int number)
      : element{elements[0], elements[1], elements[2], elements[3]}, source(number) {}

  double element[4];
  int source;  // the row number before all swaps: the column of the companion
};

template <int kColumn>
double square(const Row& row) {
  return row.element[kColumn] * row.element[kColumn];
}

// Swaps the top row with the row whose element in the column has the greatest square. Of equal
// squares the uppermost row is taken.
template <int kColumn, class... Rows>
void movePivotUp(Row& top, Rows&... below) {
  double greatest = square<kColumn>(top);
  int pivot = 0;
  int i = 0;
  const auto compare = [&](const Row& row) {
    ++i;
    if (square<kColumn>(row) > greatest) {
      greatest = square<kColumn>(row);
      pivot = i;
    }
  };
  (compare(below), ...);
  i = 0;
  ((++i == pivot ? std::swap(top, below) : void()), ...);
}

// Divides the pivot row by the pivot and clears the column in the other rows.
template <int kColumn, class... Rows>
void eliminate(Row& pivotRow, Rows&... others) {
  auto& p = pivotRow.element;
  const double pivot = std::exchange(p[kColumn], 1.0);
  p[0] /= pivot;
  p[1] /= pivot;
  p[2] /= pivot;
  p[3] /= pivot;
  const auto clear = [&](double(&element)[4]) {
    const double factor = std::exchange(element[kColumn], 0.0);
    element[0] -= factor * p[0];
    element[1] -= factor * p[1];
    element[2] -= factor * p[2];
    element[3] -= factor * p[3];
  };
  (clear(others.element), ...);
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

T4dDblMatrix& T4dDblMatrix::invertIt() {
  Row a{element_[0], 0}, b{element_[1], 1}, c{element_[2], 2}, d{element_[3], 3};
  movePivotUp<0>(a, b, c, d);
  eliminate<0>(a, b, c, d);
  movePivotUp<1>(b, c, d);
  eliminate<1>(b, a, c, d);
  movePivotUp<2>(c, d);
  eliminate<2>(c, a, b, d);
  eliminate<3>(d, a, b, c);

  const auto store = [&](double* row, const Row& result) {
    row[a.source] = result.element[0];
    row[b.source] = result.element[1];
    row[c.source] = result.element[2];
    row[d.source] = result.element[3];
  };
  store(element_[0], a);
  store(element_[1], b);
  store(element_[2], c);
  store(element_[3], d);
  return *this;
}

T4dDblMatrix T4dDblMatrix::inverse() const {
  T4dDblMatrix m = *this;
  m.invertIt();
  return m;
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
