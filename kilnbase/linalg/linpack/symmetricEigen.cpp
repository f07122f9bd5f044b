#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include <kilnbase/linalg/linpack/SweepBatch.h>
#include <kilnbase/linalg/linpack/drotg.h>
#include <kilnbase/linalg/linpack/qrIteration.h>
#include <kilnbase/linalg/linpack/symmetricEigen.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::active;
using kernels::Index;

// Rotates columns at once, for matrices of few rows.
class FewRows {
 public:
  FewRows(double* q, Index ldq, Index rows) : q_(q), ldq_(ldq), rows_(rows) {}

  void begin(Index, Index) {}
  void rotate(Index k, double c, double s) {
    double* x = q_ + k * ldq_;
    double* y = x + ldq_;
    for (Index i = 0; i < rows_; ++i) linpack::rotate(c, s, x[i], y[i]);
  }
  void apply() {}

 private:
  double* q_;
  Index ldq_;
  Index rows_;
};

// For values only.
struct NoColumns {
  void begin(Index, Index) {}
  void rotate(Index, double, double) {}
  void apply() {}
};

// The QR iteration on a symmetric tridiagonal matrix T with diagonal `d` and `e` beside. The
// rotations of T also go to `columns`.
template <class Columns>
class TridiagonalIteration {
 public:
  TridiagonalIteration(double* d, double* e, Columns& columns) : d_(d), e_(e), columns_(columns) {}

  // Makes T, of this order, diagonal; false when the iteration does not end.
  bool run(Index order) {
    Index m = order, stepsForValue = 0;
    for (Index stepsLeft = kStepsPerValue * order; m > 0 && stepsLeft > 0;) {
      const double weight = stepsForValue < kStepsPerValue ? 1.0 : kLateWeight;
      const Index first = startOfBlock(m, weight);
      if (first == m - 1) {
        --m;
        stepsForValue = 0;
        continue;
      }
      qrStep(first, m);
      ++stepsForValue;
      --stepsLeft;
    }
    columns_.apply();
    return m == 0;
  }

 private:
  // The first row of the block, without negligible elements beside its diagonal, that ends at row
  // m - 1. Sets the element of `e` above it to 0.
  Index startOfBlock(Index m, double weight) const {
    for (Index l = m - 1; l > 0; --l) {
      if (isNegligible(e_[l - 1], std::fabs(d_[l - 1]) + std::fabs(d_[l]), weight)) {
        e_[l - 1] = 0.0;
        return l;
      }
    }
    return 0;
  }

  // The eigenvalue of the last 2 by 2 block that is nearest to its last element (Wilkinson).
  double shift(Index m) const {
    const double beside = e_[m - 2];
    const double g = (d_[m - 2] - d_[m - 1]) / (2.0 * beside);
    return d_[m - 1] - beside / (g + std::copysign(std::sqrt(g * g + 1.0), g));
  }

  // One QR step on the block, with the shift applied implicitly.
  void qrStep(Index first, Index m) {
    double g = d_[first] - shift(m), c = 1.0, s = 1.0, p = 0.0;
    columns_.begin(first, m - 1);
    for (Index k = first; k < m - 1; ++k) {
      const double f = s * e_[k], b = c * e_[k];
      const Rotation rotation = rotationOf(g, f);
      if (k != first) e_[k - 1] = rotation.r;
      c = rotation.cosine();
      s = rotation.sine();
      g = d_[k] - p;
      const double r = (d_[k + 1] - g) * s + 2.0 * c * b;
      p = s * r;
      d_[k] = g + p;
      g = c * r - b;
      columns_.rotate(k, c, s);
    }
    d_[m - 1] -= p;
    e_[m - 2] = g;
  }

  double* d_;
  double* e_;
  Columns& columns_;
};

template <class Columns>
bool iterate(const SymmetricProblem& a, Columns&& columns) {
  return TridiagonalIteration<Columns>(a.d, a.e, columns).run(a.n);
}

// The matrix is free by now and serves as storage of the batch.
bool iterate(const SymmetricProblem& a, double* vectors, Index ld) {
  if (vectors == nullptr) return iterate(a, NoColumns());
  if (a.n <= SweepBatch::kStorageColumns) return iterate(a, FewRows(vectors, ld, a.n));
  return iterate(a, SweepBatch(vectors, ld, a.n, a.a, a.lda, a.n));
}

void sortColumns(Index n, double* d, double* vectors, Index ld) {
  for (Index l = 0; l < n; ++l) {
    const Index from = std::min_element(d + l, d + n) - d;
    if (from == l) continue;
    std::swap(d[l], d[from]);
    std::swap_ranges(vectors + l * ld, vectors + l * ld + n, vectors + from * ld);
  }
}

// Chooses the sign of a vector.
void orient(Index n, double* x) {
  const double largest = std::bit_cast<double>(active().bidiagonal->largestMagnitude(n, x));
  const double* decides = std::find_if(
      x, x + n, [&](double element) { return std::fabs(element) >= kSignificant * largest; });
  if (*decides > 0.0) return;
  for (Index i = 0; i < n; ++i) x[i] = -x[i];
}

double largestMagnitude(const SymmetricProblem& a) {
  std::uint64_t largest = 0;
  for (Index j = 0; j < a.n; ++j) {
    largest =
        std::max(largest, active().bidiagonal->largestMagnitude(a.n - j, a.a + j * (a.lda + 1)));
  }
  return std::bit_cast<double>(largest);
}

void scaleMatrix(const SymmetricProblem& a, int exponent) {
  for (Index j = 0; j < a.n; ++j) {
    for (Index i = j; i < a.n; ++i) a.a[i + j * a.lda] = std::ldexp(a.a[i + j * a.lda], exponent);
  }
}

EigenOutcome giveUp(const SymmetricProblem& a, double* vectors, Index ld, EigenOutcome outcome) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  std::fill_n(a.d, a.n, kNaN);
  for (Index j = 0; vectors != nullptr && j < a.n; ++j) std::fill_n(vectors + j * ld, a.n, kNaN);
  return outcome;
}

}  // namespace

EigenOutcome symmetricEigen(const SymmetricProblem& a, double* vectors, Index ld) {
  if (a.n == 0) return EigenOutcome::kFound;
  const double largest = largestMagnitude(a);
  if (!std::isfinite(largest)) return giveUp(a, vectors, ld, EigenOutcome::kNotFinite);
  const int exponent = scalingExponent(largest);
  if (exponent != 0) scaleMatrix(a, -exponent);
  tridiagonalize(a);
  if (vectors != nullptr) formTridiagonalizer(a, vectors, ld);
  if (!iterate(a, vectors, ld)) return giveUp(a, vectors, ld, EigenOutcome::kNotConverged);
  if (vectors == nullptr) {
    std::sort(a.d, a.d + a.n);
  } else {
    sortColumns(a.n, a.d, vectors, ld);
    for (Index j = 0; j < a.n; ++j) orient(a.n, vectors + j * ld);
  }
  if (exponent != 0) {
    for (Index i = 0; i < a.n; ++i) a.d[i] = std::ldexp(a.d[i], exponent);
  }
  return EigenOutcome::kFound;
}

}  // namespace vxKilnBase::linpack
