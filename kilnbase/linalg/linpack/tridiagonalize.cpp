#include <algorithm>
#include <utility>

#include <kilnbase/linalg/linpack/reflector.h>
#include <kilnbase/linalg/linpack/tridiagonalize.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::active;
using kernels::Index;

// Names are those of kernels/Tridiagonal.h. Before step k the rows and columns from k on hold A but
// for the pending sum v wᵀ + w vᵀ.
class TridiagonalReduction {
 public:
  explicit TridiagonalReduction(const SymmetricProblem& problem)
      : p_(problem), v_(p_.work), w_(v_ + p_.lda), x_(w_ + p_.lda), y_(x_ + p_.lda) {
    std::fill_n(p_.work, SymmetricProblem::kWorkColumns * p_.lda, 0.0);
  }

  void run() {
    for (Index k = 0; k < p_.n; ++k) {
      bringUpToDate(k);
      double* column = p_.a + k * p_.lda;
      p_.d[k] = column[k];
      p_.e[k] = k + 1 < p_.n ? column[k + 1] : 0.0;
      if (k + 2 < p_.n) reflect(k);
    }
  }

 private:
  void bringUpToDate(Index k) {
    double* column = p_.a + k * (p_.lda + 1);
    active().dense->axpy(p_.n - k, -w_[k], v_ + k, column);
    active().dense->axpy(p_.n - k, -v_[k], w_ + k, column);
  }

  // Makes the reflection of column k, and carries the one before into the columns behind.
  void reflect(Index k) {
    const Index next = k + 1, m = p_.n - next;
    double* vector = p_.a + next + k * p_.lda;
    p_.e[k] = makeReflector(m, vector);
    std::copy_n(vector, m, x_ + next);
    std::fill_n(y_, p_.n, 0.0);
    active().tridiagonal->step(next, p_.n, p_.a, p_.lda, {v_, w_, x_, y_});
    if (*vector != 0.0) {
      const double inverse = 1.0 / *vector;
      const double product = active().dense->dot(m, x_ + next, y_ + next);
      active().dense->scale(m, inverse, y_ + next);
      active().dense->axpy(m, -0.5 * inverse * inverse * product, x_ + next, y_ + next);
    }
    std::swap(v_, x_);
    std::swap(w_, y_);
  }

  const SymmetricProblem p_;
  double* v_;
  double* w_;
  double* x_;
  double* y_;
};

}  // namespace

void tridiagonalize(const SymmetricProblem& problem) {
  TridiagonalReduction(problem).run();
}

void formTridiagonalizer(const SymmetricProblem& problem, double* q, Index ldq) {
  const Index n = problem.n;
  std::fill_n(q, n, 0.0);
  q[0] = 1.0;
  for (Index j = 1; j < n; ++j) {
    q[j * ldq] = 0.0;
    std::copy_n(problem.a + j + (j - 1) * problem.lda, n - j, q + j + j * ldq);
  }
  formOrthogonal(n - 1, n - 1, std::max<Index>(0, n - 2), q + ldq + 1, ldq);
}

}  // namespace vxKilnBase::linpack
