#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/SweepBatch.h>
#include <kilnbase/linalg/linpack/bidiagonalize.h>
#include <kilnbase/linalg/linpack/dnrm2.h>
#include <kilnbase/linalg/linpack/dqrdc.h>
#include <kilnbase/linalg/linpack/drotg.h>
#include <kilnbase/linalg/linpack/dsvdc.h>
#include <kilnbase/linalg/linpack/qrIteration.h>
#include <kilnbase/linalg/linpack/reflector.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::Index;

// The QR iteration on an upper bidiagonal matrix B (Golub and Van Loan, Matrix Computations, 8.6),
// with diagonal `s` and super-diagonal `e`. A block is a run of rows in which no element of `e` is
// negligible.
class BidiagonalIteration {
 public:
  BidiagonalIteration(double* s, double* e, SweepBatch& left, SweepBatch& right)
      : s_(s), e_(e), left_(left), right_(right) {}

  // Makes B, of this order, diagonal. Returns how many values, the first ones, were not found.
  Index run(Index order) {
    Index m = order;
    Index stepsForValue = 0;
    for (Index stepsLeft = kStepsPerValue * order; m > 0 && stepsLeft > 0;) {
      weight_ = stepsForValue < kStepsPerValue ? 1.0 : kLateWeight;
      const Index first = startOfBlock(m);
      if (first == m - 1) {
        --m;
        stepsForValue = 0;
        continue;
      }
      const Index zero = lastNegligibleValue(first, m);
      if (zero == m - 1) {
        deflate(first, m);
      } else if (zero >= first) {
        split(zero, m);
      } else {
        qrStep(first, m);
        ++stepsForValue;
        --stepsLeft;
      }
    }
    left_.apply();
    right_.apply();
    return m;
  }

 private:
  // The first row of the block that ends at row m - 1. Sets the element of `e` above it to 0.
  Index startOfBlock(Index m) const {
    for (Index l = m - 1; l > 0; --l) {
      if (isNegligible(e_[l - 1], std::fabs(s_[l - 1]) + std::fabs(s_[l]), weight_)) {
        e_[l - 1] = 0.0;
        return l;
      }
    }
    return 0;
  }

  // The last row of the block whose element of `s` is negligible, or -1. Sets that element to 0.
  Index lastNegligibleValue(Index first, Index m) const {
    for (Index l = m - 1; l >= first; --l) {
      double neighbours = 0.0;
      if (l != m - 1) neighbours += std::fabs(e_[l]);
      if (l != first) neighbours += std::fabs(e_[l - 1]);
      if (isNegligible(s_[l], neighbours, weight_)) {
        s_[l] = 0.0;
        return l;
      }
    }
    return -1;
  }

  // s[m - 1] is 0: turns e[m - 2] into 0 by rotations of columns k and m - 1.
  void deflate(Index first, Index m) {
    double f = std::exchange(e_[m - 2], 0.0);
    for (Index k = m - 2; k >= first; --k) {
      const Rotation rotation = rotationOf(s_[k], f);
      s_[k] = rotation.r;
      if (k != first) {
        f = -rotation.sine() * e_[k - 1];
        e_[k - 1] *= rotation.cosine();
      }
      right_.rotateNow(k, m - 1, rotation.cosine(), rotation.sine());
    }
  }

  // s[zero] is 0: turns e[zero] into 0 by rotations of rows k and `zero`.
  void split(Index zero, Index m) {
    double f = std::exchange(e_[zero], 0.0);
    for (Index k = zero + 1; k < m; ++k) {
      const Rotation rotation = rotationOf(s_[k], f);
      s_[k] = rotation.r;
      f = -rotation.sine() * e_[k];
      e_[k] *= rotation.cosine();
      left_.rotateNow(k, zero, rotation.cosine(), rotation.sine());
    }
  }

  // {f, g}: a multiple of the first column of BᵀB − µ I for the block; its other elements are 0.
  // The shift µ is the eigenvalue of the last 2 by 2 block of BBᵀ that is nearest to its last
  // element.
  std::pair<double, double> shiftedColumn(Index first, Index m) const {
    const double scale = std::max({std::fabs(s_[m - 1]), std::fabs(s_[m - 2]), std::fabs(e_[m - 2]),
                                   std::fabs(s_[first]), std::fabs(e_[first])});
    const double last = s_[m - 1] / scale;
    const double lastButOne = s_[m - 2] / scale;
    const double between = e_[m - 2] / scale;
    const double top = s_[first] / scale;
    const double b = ((lastButOne + last) * (lastButOne - last) + between * between) / 2.0;
    const double c = (last * between) * (last * between);
    double shift = 0.0;
    if (b != 0.0 || c != 0.0) shift = c / (b + std::copysign(std::sqrt(b * b + c), b));
    return {(top + last) * (top - last) + shift, top * (e_[first] / scale)};
  }

  // One QR step on the block, with the shift applied implicitly (Golub and Kahan).
  void qrStep(Index first, Index m) {
    auto [f, g] = shiftedColumn(first, m);
    left_.begin(first, m - 1);
    right_.begin(first, m - 1);
    for (Index k = first; k < m - 1; ++k) {
      const Rotation right = rotationOf(f, g);
      if (k != first) e_[k - 1] = right.r;
      f = right.first(s_[k], e_[k]);
      const double above = right.second(s_[k], e_[k]);
      g = right.first(0.0, s_[k + 1]);
      const double below = right.second(0.0, s_[k + 1]);
      right_.rotate(k, right.cosine(), right.sine());

      const Rotation left = rotationOf(f, g);
      s_[k] = left.r;
      f = left.first(above, below);
      s_[k + 1] = left.second(above, below);
      g = left.first(0.0, e_[k + 1]);
      e_[k + 1] = left.second(0.0, e_[k + 1]);
      left_.rotate(k, left.cosine(), left.sine());
    }
    e_[m - 2] = f;
  }

  double* s_;
  double* e_;
  SweepBatch& left_;
  SweepBatch& right_;
  double weight_ = 1.0;
};

int iterate(const SingularProblem& a) {
  constexpr Index kColumns = 2 * SweepBatch::kStorageColumns;
  double few[kColumns * kColumns];
  const bool fits = a.p >= kColumns;  // X is free by now and serves as storage
  double* storage = fits ? a.x : few;
  const Index ld = fits ? a.ldx : kColumns;
  const Index half = fits ? a.p / 2 : SweepBatch::kStorageColumns;
  SweepBatch left(a.u, a.ldu, a.n, storage, ld, half);
  SweepBatch right(a.v, a.ldv, a.p, storage + half * ld, ld, half);
  return static_cast<int>(BidiagonalIteration(a.s, a.e, left, right).run(a.order()));
}

void swapColumns(Index n, double* q, Index ldq, Index j, Index k) {
  if (q != nullptr) std::swap_ranges(q + j * ldq, q + j * ldq + n, q + k * ldq);
}

void makePositive(const SingularProblem& a, Index l) {
  if (a.s[l] >= 0.0) return;
  a.s[l] = -a.s[l];
  if (a.v == nullptr) return;
  double* column = a.v + l * a.ldv;
  for (Index i = 0; i < a.p; ++i) column[i] = -column[i];
}

// Sorts s[found] to s[end - 1] in descending order; equal values keep their order. The value at
// place i stood at place work[i] before.
void sortValues(const SingularProblem& a, Index found, Index end) {
  for (Index l = found; l < end; ++l) {
    const double value = a.s[l];
    Index place = l;
    for (; place > found && a.s[place - 1] < value; --place) {
      a.s[place] = a.s[place - 1];
      a.work[place] = a.work[place - 1];
    }
    a.s[place] = value;
    a.work[place] = static_cast<double>(l);
  }
}

// Makes the values from s[found] on positive, and sorts them and their vectors in descending order.
// An (n + 1)st value is 0 and stays last.
void orderValues(const SingularProblem& a, Index found) {
  for (Index l = found; l < a.order(); ++l) makePositive(a, l);
  const Index end = std::min(a.n, a.order());
  sortValues(a, found, end);
  for (Index l = found; l < end; ++l) {
    Index from = static_cast<Index>(a.work[l]);
    while (from < l) from = static_cast<Index>(a.work[from]);
    if (from == l) continue;
    swapColumns(a.n, a.u, a.ldu, l, from);
    swapColumns(a.p, a.v, a.ldv, l, from);
  }
}

template <class Function>
void forColumns(Index n, Index columns, double* data, Index ld, Function function) {
  if (data == nullptr) return;
  for (Index j = 0; j < columns; ++j) function(n, data + j * ld);
}

// The largest |x|; infinity or a NaN if X has such an element.
double largestMagnitude(const SingularProblem& a) {
  std::uint64_t largest = 0;
  forColumns(a.n, a.p, a.x, a.ldx, [&](Index n, double* x) {
    largest = std::max(largest, kernels::active().bidiagonal->largestMagnitude(n, x));
  });
  return std::bit_cast<double>(largest);
}

// Sets all results to NaN. Returns the number of values that were not found: all.
int giveUp(const SingularProblem& a) {
  const auto spoil = [](Index n, double* x) {
    std::fill_n(x, n, std::numeric_limits<double>::quiet_NaN());
  };
  spoil(a.order(), a.s);
  spoil(a.p, a.e);
  forColumns(a.n, a.leftVectors, a.u, a.ldu, spoil);
  forColumns(a.p, a.p, a.v, a.ldv, spoil);
  return static_cast<int>(std::min(a.n, a.p));
}

// B = Uᵀ X V, then B = L S Rᵀ, with U := U L and V := V R.
int decomposeDirectly(const SingularProblem& a) {
  bidiagonalize(a);
  const int missing = iterate(a);
  orderValues(a, missing);
  return missing;
}

// Turns X, the result of dqrdc, into the Q of X = Q R in U, and puts R into the triangle.
void takeApart(const SingularProblem& a, const double* qraux) {
  for (Index j = 0; j < a.p; ++j) {
    const double* column = a.x + j * a.ldx;
    std::fill_n(std::copy_n(column, j + 1, a.triangle + j * a.p), a.p - j - 1, 0.0);
    if (a.u == nullptr) continue;
    std::copy(column + j, column + a.n, a.u + j + j * a.ldu);
    a.u[j + j * a.ldu] = qraux[j];
  }
  if (a.u != nullptr) formOrthogonal(a.n, a.leftVectors, a.p, a.u, a.ldu);
}

void copyColumns(Index n, Index columns, const double* from, Index ldFrom, double* to, Index ldTo) {
  for (Index j = 0; j < columns; ++j) std::copy_n(from + j * ldFrom, n, to + j * ldTo);
}

// Brings the columns of X into descending order of their norms. The column at place j stood at
// place order[j] before.
void sortColumns(const SingularProblem& a, double* order) {
  for (Index j = 0; j < a.p; ++j) {
    a.s[j] = dnrm2(a.n, a.x + j * a.ldx, 1);
    order[j] = static_cast<double>(j);
  }
  for (Index j = 0; j < a.p; ++j) {
    const Index largest = std::max_element(a.s + j, a.s + a.p) - a.s;
    if (largest == j) continue;
    std::swap(a.s[j], a.s[largest]);
    std::swap(order[j], order[largest]);
    swapColumns(a.n, a.x, a.ldx, j, largest);
  }
}

// Brings the rows of V into the order that the columns of X had before `sortColumns`.
void restoreRows(const SingularProblem& a, const double* order) {
  forColumns(a.p, a.p, a.v, a.ldv, [&](Index n, double* column) {
    std::copy_n(column, n, a.work);
    for (Index i = 0; i < n; ++i) column[static_cast<Index>(order[i])] = a.work[i];
  });
}

// X P = Q R, then R = W S Zᵀ, with U = Q W and V = P Z.
int decomposeTall(const SingularProblem& a) {
  double* order = a.triangle + a.p * a.p;
  sortColumns(a, order);
  dqrdc(a.x, static_cast<int>(a.ldx), static_cast<int>(a.n), static_cast<int>(a.p), a.e, nullptr,
        nullptr, 0);
  takeApart(a, a.e);
  SingularProblem r = a;
  r.n = a.p;
  r.x = a.triangle;
  r.ldx = a.p;
  if (a.u != nullptr) {
    r.u = a.x;
    r.ldu = a.ldx;
    r.leftVectors = a.p;
  }
  const int missing = decomposeDirectly(r);
  restoreRows(a, order);
  if (a.u == nullptr) return missing;
  copyColumns(a.p, a.p, a.x, a.ldx, a.triangle, a.p);
  copyColumns(a.n, a.p, a.u, a.ldu, a.x, a.ldx);
  kernels::active().dense->product(a.n, a.p, a.p, {a.x, 1, a.ldx}, {a.triangle, 1, a.p}, a.u, a.ldu,
                                   nullptr);
  return missing;
}

int decompose(const SingularProblem& a) {
  const double largest = largestMagnitude(a);
  if (!std::isfinite(largest)) return giveUp(a);
  const int exponent = scalingExponent(largest);
  const auto scaleBy = [](int power) {
    return [power](Index n, double* x) {
      for (Index i = 0; i < n; ++i) x[i] = std::ldexp(x[i], power);
    };
  };
  if (exponent != 0) forColumns(a.n, a.p, a.x, a.ldx, scaleBy(-exponent));
  const int missing = isTall(a.n, a.p) ? decomposeTall(a) : decomposeDirectly(a);
  if (exponent != 0) {
    scaleBy(exponent)(a.order(), a.s);
    scaleBy(exponent)(a.p, a.e);
  }
  return missing;
}

}  // namespace

int dsvdc(double* x, int ldx, int n, int p, double* s, double* e, double* u, int ldu, double* v,
          int ldv, double* work, int job, double* triangle) {
  if (n <= 0 || p <= 0) return 0;
  const int left = job % 100 / 10;
  SingularProblem problem;
  problem.n = n;
  problem.p = p;
  problem.x = x;
  problem.ldx = ldx;
  problem.s = s;
  problem.e = e;
  problem.ldu = ldu;
  problem.ldv = ldv;
  problem.work = work;
  problem.triangle = triangle;
  if (left != 0) {
    problem.u = u;
    problem.leftVectors = left > 1 ? std::min(n, p) : n;
  }
  if (job % 10 != 0) problem.v = v;
  return decompose(problem);
}

}  // namespace vxKilnBase::linpack
