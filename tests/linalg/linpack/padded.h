// Matrices with room around their columns, which no routine may write to.
#pragma once

#include <cmath>
#include <gtest/gtest.h>

#include "tests/support/GuardedArray.h"
#include "tests/support/Matrices.h"

namespace kilntest {

/// A column-major matrix with `gap` guards between its columns, or the upper triangle of a
/// symmetric matrix in packed storage. The destructor checks the guards.
struct Padded {
  static constexpr Index kPacked = -1;  // in the place of a gap

  /// Guards only.
  Padded(Index m, Index n, Index gap = 3)
      : rows(m), columns(n), ld(gap == kPacked ? 0 : m + gap), array(size()) {}
  explicit Padded(const DoubleGenMat& a, Index gap = 3) : Padded(a.rows(), a.cols(), gap) {
    forEach([&](double& x, int i, int j) { x = a(i, j); });
  }
  static Padded random(Index m, Index n, std::uint64_t seed, Index gap = 3) {
    return Padded(randomMatrix(static_cast<unsigned>(m), static_cast<unsigned>(n), seed), gap);
  }
  ~Padded() {
    Doubles guards(size());
    forEach([&](double& x, Index i, Index j) { x = guards[place(i, j)]; });
    EXPECT_EQ(array.difference(guards), "");
  }
  Padded(const Padded&) = default;
  Padded& operator=(const Padded&) = default;

  Index place(Index i, Index j) const { return ld == 0 ? j * (j + 1) / 2 + i : j * ld + i; }
  double& at(Index i, Index j) { return array[place(i, j)]; }
  double* data() { return array.data(); }
  int stride() const { return static_cast<int>(ld); }
  int order() const { return static_cast<int>(columns); }

  /// A packed matrix is symmetric.
  DoubleGenMat matrix() {
    DoubleGenMat a(static_cast<unsigned>(rows), static_cast<unsigned>(columns));
    forEach([&](double& x, int i, int j) {
      a(i, j) = x;
      if (ld == 0) a(j, i) = x;
    });
    return a;
  }

  /// The last element that differs from the expected one by more than the tolerance, or nothing.
  /// The gaps may be different. Guards may stand for elements.
  std::string difference(Padded expected, double tolerance) {
    std::ostringstream text;
    forEach([&](double got, Index i, Index j) {
      const double wanted = expected.at(i, j);
      if ((std::isnan(got) && std::isnan(wanted)) || std::fabs(got - wanted) <= tolerance) return;
      text.str({});
      text << "(" << i << ", " << j << ") is " << got << ", not " << wanted;
    });
    return text.str();
  }

  Index rows, columns, ld;
  Doubles array;

 private:
  Index size() const { return columns == 0 ? 0 : place(rows - 1, columns - 1) + 1; }

  template <class Use>
  void forEach(const Use& use) {
    for (int j = 0; j < columns; ++j) {
      for (int i = 0; i < (ld == 0 ? j + 1 : rows); ++i) use(at(i, j), i, j);
    }
  }
};

}  // namespace kilntest
