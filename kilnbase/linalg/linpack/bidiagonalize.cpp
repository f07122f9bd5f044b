#include <algorithm>
#include <cmath>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/bidiagonalize.h>
#include <kilnbase/linalg/linpack/reflector.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::Index;

// Below this norm of a row its products with the matrix are formed again, from the scaled row.
constexpr double kLeastSafeRow = 0x1p-400;

class Reduction {
 public:
  explicit Reduction(const SingularProblem& problem)
      : a_(problem),
        columnSteps_(std::min(a_.n - 1, a_.p)),
        rowSteps_(std::max<Index>(0, std::min(a_.p - 2, a_.n))) {}

  void run() {
    std::fill_n(a_.e, a_.p, 0.0);
    for (Index l = 0; l < std::min(a_.n, a_.p); ++l) step(l);
    if (a_.n < a_.p) a_.s[a_.n] = 0.0;
    std::fill(a_.e + a_.order() - 1, a_.e + a_.p, 0.0);
    if (a_.u != nullptr) formOrthogonal(a_.n, a_.leftVectors, columnSteps_, a_.u, a_.ldu);
    if (a_.v != nullptr) formRightVectors();
  }

 private:
  double* x(Index i, Index j) const { return a_.x + i + j * a_.ldx; }

  void step(Index l) {
    if (pending_) kernels::active().dense->axpy(a_.n - l, -1.0, x(l, l - 1), x(l, l));
    const bool reflected = transformColumn(l);
    if (l + 1 == a_.p) return;
    updateRest(l, reflected);
    if (l < rowSteps_) {
      transformRow(l);
    } else {
      pending_ = false;
      a_.e[l] = a_.e[l + 1];
    }
  }

  // Makes the transformation of column l; false where there is none.
  bool transformColumn(Index l) {
    double* column = x(l, l);
    a_.s[l] = l < columnSteps_ ? makeReflector(a_.n - l, column) : column[0];
    if (l >= columnSteps_) return false;
    if (a_.u != nullptr) std::copy_n(column, a_.n - l, a_.u + l + l * a_.ldu);
    return a_.s[l] != 0.0;
  }

  // Brings the columns after l up to date and leaves row l in e, the sum of the columns, each times
  // its element of row l, in work.
  void updateRest(Index l, bool reflected) {
    const double* v = x(l, l);
    kernels::BidiagonalStep todo;
    todo.v = v;
    todo.vFactor = reflected ? 1.0 / v[0] : 0.0;
    todo.w = pending_ ? x(l, l - 1) : v;
    todo.wFactor = pending_ ? 1.0 / a_.e[l] : 0.0;
    todo.e = a_.e + l + 1;
    todo.work = a_.work + l;
    std::fill_n(todo.work, a_.n - l, 0.0);
    kernels::active().bidiagonal->step(a_.n - l, a_.p - l - 1, x(l, l + 1), a_.ldx, todo);
  }

  // Makes the transformation of row l from what updateRest left, and its product with the remaining
  // matrix, which takes the place of column l.
  void transformRow(Index l) {
    double* row = a_.e + l + 1;
    a_.e[l] = makeReflector(a_.p - l - 1, row);
    pending_ = a_.e[l] != 0.0;
    if (a_.v != nullptr) std::copy_n(row, a_.p - l - 1, a_.v + (l + 1) * (a_.ldv + 1));
    if (!pending_) return;
    const Index m = a_.n - l - 1;
    double* product = x(l + 1, l);
    const double* first = x(l + 1, l + 1);
    if (std::fabs(a_.e[l]) < kLeastSafeRow) {
      std::fill_n(product, m, 0.0);
      kernels::active().dense->gemv(m, a_.p - l - 1, 1.0, first, a_.ldx, row, product);
      return;
    }
    const double factor = -1.0 / a_.e[l];
    for (Index i = 0; i < m; ++i) product[i] = factor * a_.work[l + 1 + i] + first[i];
  }

  // The row transformations leave the first unit vector alone: V is 1 and the product of the rest.
  void formRightVectors() {
    std::fill_n(a_.v, a_.p, 0.0);
    for (Index j = 1; j < a_.p; ++j) a_.v[j * a_.ldv] = 0.0;
    a_.v[0] = 1.0;
    formOrthogonal(a_.p - 1, a_.p - 1, rowSteps_, a_.v + a_.ldv + 1, a_.ldv);
  }

  SingularProblem a_;
  Index columnSteps_;
  Index rowSteps_;
  bool pending_ =
      false;  // whether the row transformation of the step before is still to be applied
};

}  // namespace

void bidiagonalize(const SingularProblem& problem) {
  Reduction(problem).run();
}

}  // namespace vxKilnBase::linpack
