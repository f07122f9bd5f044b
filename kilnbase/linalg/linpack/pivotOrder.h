// The order in which a pivoted factorization starts.
#pragma once

#include <utility>

#include <kilnbase/linalg/kernels/Dense.h>

namespace vxKilnBase::linpack {

/// The places `begin` to `end` - 1 hold the free elements, which take part in pivoting.
struct FreeRange {
  kernels::Index begin;
  kernels::Index end;
};

/// Moves the initial elements (jpvt[j] > 0) to the front and the final ones (jpvt[j] < 0) to the
/// end, with the free ones (jpvt[j] = 0) between them.
///
/// An element is a column of a matrix, or a row and the column of the same number. Calls
/// exchange(i, j) with i < j for each two places that change their elements. On return jpvt[j] is
/// the number, from 1, of the element that stood at place jpvt[j] - 1 at first and now stands at
/// place j. `jpvt` has n elements.
///
/// Source: LINPACK Users' Guide, SIAM 1979, chapters 8 and 9.
template <class Exchange>
FreeRange pivotOrder(kernels::Index n, int* jpvt, Exchange exchange) {
  FreeRange range = {0, n};
  const auto move = [&](kernels::Index i, kernels::Index j) {
    if (i == j) return;
    exchange(i, j);
    std::swap(jpvt[i], jpvt[j]);
  };
  for (kernels::Index j = 0; j < n; ++j) {
    const int number = static_cast<int>(j) + 1;
    const bool initial = jpvt[j] > 0;
    jpvt[j] = jpvt[j] < 0 ? -number : number;
    if (initial) move(range.begin++, j);
  }
  for (kernels::Index j = n; j-- > range.begin;) {
    if (jpvt[j] > 0) continue;
    jpvt[j] = -jpvt[j];
    move(j, --range.end);
  }
  return range;
}

}  // namespace vxKilnBase::linpack
