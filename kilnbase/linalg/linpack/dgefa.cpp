#include <algorithm>
#include <utility>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/kernels/Tuning.h>
#include <kilnbase/linalg/linpack/dgefa.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::Index;

constexpr Index kPanelColumns = kernels::LuKernels::kPanelColumns;
constexpr Index kBlockColumns = kernels::tuning::kLuBlockColumns;

// The recursion over columns. The multipliers of some columns stand in the rows where their own
// steps have left them. While these steps are carried into other columns, the rows of the
// multipliers take the order after the last of the steps, and then go back. Source: S. Toledo,
// Locality of reference in LU decomposition with partial pivoting, SIAM J. Matrix Anal. Appl. 18
// (1997), 1065-1081.
class Elimination {
 public:
  Elimination(double* a, Index lda, Index n, int* ipvt) : a_(a), lda_(lda), n_(n), ipvt_(ipvt) {}

  // Eliminates these columns, into which all earlier steps have been carried. Returns the number
  // from 1 of the last step with pivot 0, or 0.
  Index factor(Index begin, Index end) {
    const Index width = end - begin;
    if (width <= kPanelColumns) return factorPanel(begin, end);
    const Index half = (width / 2 + kPanelColumns - 1) / kPanelColumns * kPanelColumns;
    const Index middle = begin + std::min(half, kBlockColumns);
    const Index first = factor(begin, middle);
    update(begin, middle, end);
    const Index second = factor(middle, end);
    return second > 0 ? second : first;
  }

 private:
  double* at(Index i, Index j) const { return a_ + j * lda_ + i; }

  Index factorPanel(Index begin, Index end) {
    const Index info = kernels::active().lu->factorPanel(n_ - begin, end - begin, at(begin, begin),
                                                         lda_, ipvt_ + begin);
    for (Index k = begin; k < end; ++k) ipvt_[k] += static_cast<int>(begin + 1);
    return info > 0 ? begin + info : 0;
  }

  void exchange(Index k, double* column) const { std::swap(column[k], column[ipvt_[k] - 1]); }

  // Carries the steps from `begin` to `middle` into the columns from there to `end`.
  void update(Index begin, Index middle, Index end) const {
    const Index k = middle - begin;
    const auto& kernels = kernels::active();
    for (Index j = begin; j < end; ++j) {
      for (Index i = j < middle ? j + 1 : begin; i < middle; ++i) exchange(i, at(0, j));
    }
    kernels.lu->solveMultipliers(k, end - middle, at(begin, begin), lda_, at(begin, middle), lda_);
    kernels.dense->gemm(n_ - middle, end - middle, k, 1.0, {at(middle, begin), 1, lda_},
                        {at(begin, middle), 1, lda_}, at(middle, middle), lda_);
    for (Index j = begin; j < middle; ++j) {
      for (Index i = middle; --i > j;) exchange(i, at(0, j));
    }
  }

  double* a_;
  Index lda_;
  Index n_;
  int* ipvt_;
};

}  // namespace

int dgefa(double* a, int lda, int n, int* ipvt) {
  return static_cast<int>(Elimination(a, lda, n, ipvt).factor(0, n));
}

}  // namespace vxKilnBase::linpack
