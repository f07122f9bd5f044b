#include <algorithm>
#include <cmath>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/bidiagonalize.h>
#include <kilnbase/linalg/linpack/reflector.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::Index;

// Below this norm of a row, A z is computed from the scaled row z and not from the row itself.
constexpr double kLeastSafeRow = 0x1p-400;

// Names are those of kernels/Bidiagonal.h. Before step l
//   - rows and columns from l on of X hold A,
//   - e holds z from e[l] on, and column l - 1 of X holds w from row l on, if the reflection
//     A := A − w zᵀ / z₀ is pending.
class Reduction {
 public:
  explicit Reduction(const SingularProblem& problem)
      : a_(problem),
        leftSteps_(std::min(a_.n - 1, a_.p)),
        rightSteps_(std::max<Index>(0, std::min(a_.p - 2, a_.n))) {}

  void run() {
    std::fill_n(a_.e, a_.p, 0.0);
    for (Index l = 0; l < std::min(a_.n, a_.p); ++l) step(l);
    if (a_.n < a_.p) a_.s[a_.n] = 0.0;
    std::fill(a_.e + a_.order() - 1, a_.e + a_.p, 0.0);
    if (a_.u != nullptr) formOrthogonal(a_.n, a_.leftVectors, leftSteps_, a_.u, a_.ldu);
    if (a_.v != nullptr) formRightVectors();
  }

 private:
  double* x(Index i, Index j) const { return a_.x + i + j * a_.ldx; }

  void step(Index l) {
    // Column l of A − w zᵀ / z₀ is column l − w.
    if (pending_) kernels::active().dense->axpy(a_.n - l, -1.0, x(l, l - 1), x(l, l));
    const bool reflected = reflectFromLeft(l);
    if (l + 1 == a_.p) return;
    updateRest(l, reflected);
    if (l < rightSteps_) {
      reflectFromRight(l);
    } else {
      pending_ = false;
      a_.e[l] = a_.e[l + 1];
    }
  }

  // Turns column l into v and s[l]; false where there is no reflection.
  bool reflectFromLeft(Index l) {
    double* column = x(l, l);
    a_.s[l] = l < leftSteps_ ? makeReflector(a_.n - l, column) : column[0];
    if (l >= leftSteps_) return false;
    if (a_.u != nullptr) std::copy_n(column, a_.n - l, a_.u + l + l * a_.ldu);
    return a_.s[l] != 0.0;
  }

  // Brings the columns behind column l up to date. Leaves row l of A in e, from e[l + 1] on, and in
  // `work` the product of A with this row.
  void updateRest(Index l, bool reflected) {
    const double* v = x(l, l);
    kernels::BidiagonalStep todo;
    todo.v = v;
    todo.vFactor = reflected ? 1.0 / v[0] : 0.0;
    todo.w = pending_ ? x(l, l - 1) : v;
    todo.wFactor = pending_ ? 1.0 / a_.e[l] : 0.0;
    todo.z = a_.e + l + 1;
    todo.work = a_.work + l;
    std::fill_n(todo.work, a_.n - l, 0.0);
    kernels::active().bidiagonal->step(a_.n - l, a_.p - l - 1, x(l, l + 1), a_.ldx, todo);
  }

  // Turns row l, in e from e[l + 1] on, into z and e[l] = ρ, and puts w = A z into column l.
  void reflectFromRight(Index l) {
    double* z = a_.e + l + 1;
    a_.e[l] = makeReflector(a_.p - l - 1, z);
    pending_ = a_.e[l] != 0.0;
    if (a_.v != nullptr) std::copy_n(z, a_.p - l - 1, a_.v + (l + 1) * (a_.ldv + 1));
    if (!pending_) return;
    const Index m = a_.n - l - 1;
    double* w = x(l + 1, l);
    const double* first = x(l + 1, l + 1);
    if (std::fabs(a_.e[l]) < kLeastSafeRow) {
      std::fill_n(w, m, 0.0);
      kernels::active().dense->gemv(m, a_.p - l - 1, 1.0, first, a_.ldx, z, w);
      return;
    }
    // z = −row / ρ + e₁, so that A z is the product with the row, divided by −ρ, plus the first
    // column of A.
    const double factor = -1.0 / a_.e[l];
    for (Index i = 0; i < m; ++i) w[i] = factor * a_.work[l + 1 + i] + first[i];
  }

  // V is 1 in its first row and column, and the product of the reflections in the others.
  void formRightVectors() {
    std::fill_n(a_.v, a_.p, 0.0);
    for (Index j = 1; j < a_.p; ++j) a_.v[j * a_.ldv] = 0.0;
    a_.v[0] = 1.0;
    formOrthogonal(a_.p - 1, a_.p - 1, rightSteps_, a_.v + a_.ldv + 1, a_.ldv);
  }

  SingularProblem a_;
  Index leftSteps_;
  Index rightSteps_;
  bool pending_ = false;
};

}  // namespace

void bidiagonalize(const SingularProblem& problem) {
  Reduction(problem).run();
}

}  // namespace vxKilnBase::linpack
