#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include <kilnbase/detail/assert.h>
#include <kilnbase/linalg/DoubleChDecomp.h>
#include <kilnbase/linalg/detail/PivotedOrder.h>
#include <kilnbase/linalg/detail/errors.h>
#include <kilnbase/linalg/linpack/dchdc.h>
#include <kilnbase/linalg/linpack/dchdd.h>
#include <kilnbase/linalg/linpack/dchex.h>
#include <kilnbase/linalg/linpack/dchud.h>
#include <kilnbase/linalg/linpack/rightHandSides.h>

namespace {

namespace detail = vxKilnBase::detail;
using vxKilnBase::detail::PivotedOrder;

// Up to this order the work vector is on the stack.
constexpr unsigned kSmallOrder = 64;

// Raises an error with both numbers unless they agree.
bool agree(unsigned given, unsigned expected, auto raise) {
  if (given == expected) return true;
  raise(given, expected);
  return false;
}

// Takes an argument of the wrong length as not given.
template <class Vector>
void dropUnlessLength(Vector*& argument, unsigned length, auto raise) {
  if (argument != nullptr && !agree(argument->length(), length, raise)) argument = nullptr;
}

// A view of `v`, or a copy if it is not contiguous.
DoubleVec contiguous(const DoubleVec& v) {
  return v.stride() == 1 ? DoubleVec(v) : v.copy();
}

// Contiguous storage for an optional result: that of the argument where it is contiguous, otherwise
// scratch. At the end of its life the argument, if any, receives the elements of the scratch.
class Result {
 public:
  Result(DoubleVec* argument, unsigned length, double initial)
      : argument_(argument),
        storage_(argument != nullptr ? contiguous(*argument) : DoubleVec(length, initial)) {}
  ~Result() {
    if (argument_ != nullptr && argument_->stride() != 1) *argument_ = storage_;
  }
  Result(const Result&) = delete;
  Result& operator=(const Result&) = delete;

  double* data() { return storage_.data(); }

 private:
  DoubleVec* argument_;
  DoubleVec storage_;
};

}  // namespace

DoubleChDecomp::DoubleChDecomp(const DoubleGenMat& a) {
  factor(a);
}

void DoubleChDecomp::factor(const DoubleGenMat& a) {
  if (a.rows() < a.cols()) {
    detail::raiseTooFewRows(static_cast<int>(a.rows()), static_cast<int>(a.cols()));
  }
  reference(a.copy());
  dofactor();
}

void DoubleChDecomp::dofactor() {
  if (pivoting_ != 0) pvts_.resize(cols());
  pvts_.deepenShallowCopy();
  double few[kSmallOrder];
  const RWBlock many(pivoting_ != 0 && order() > kSmallOrder ? order() : 0, sizeof(double));
  double* work = order() > kSmallOrder ? static_cast<double*>(many.data) : few;
  const bool noMemory = pivoting_ != 0 && work == nullptr;
  info_ = vxKilnBase::linpack::dchdc(data(), static_cast<int>(rows()),
                                     noMemory ? 0 : static_cast<int>(order()), work, pvts_.data(),
                                     pivoting_ != 0 ? 1 : 0);
  std::for_each(pvts_.data(), pvts_.data() + pvts_.length(), [](int& pivot) { --pivot; });
  permuted_ = pivoting_;
}

void DoubleChDecomp::makeContiguous() {
  if (stride() != 1) deepenShallowCopy();
}

int DoubleChDecomp::doPivoting(int on) {
  const int old = pivoting_;
  pivoting_ = on;
  return old;
}

int DoubleChDecomp::setPivoting(int k, int position) {
  KILN_ASSERT(k >= 0);
  if (k < 0) return FREE;
  if (position < FINAL || position > INITIAL) detail::raisePivotPosition(position);
  const unsigned length = static_cast<unsigned>(k) + 1;
  if (pvts_.length() < length) pvts_.resize(length);
  pvts_.deepenShallowCopy();  // copies and pivots() keep theirs
  const int old = pvts_(k);
  pvts_(k) = position;
  return old;
}

bool DoubleChDecomp::fail() const {
  for (int i = info_ > 0 ? info_ - 1 : 0; i < static_cast<int>(order()); ++i) {
    if ((*this)(i, i) < 0.0) return true;
  }
  return false;
}

double DoubleChDecomp::condition() const {
  if (pivoting_ == 0) {
    detail::raiseNoConditionNumber();
    return -1.0;
  }
  const int last = static_cast<int>(cols()) - 1;
  if (info_ != last || last < 0 || rows() < cols()) return 0.0;
  const double ratio = (*this)(last, last) / (*this)(0, 0);
  return ratio * ratio;
}

DoubleVec DoubleChDecomp::solve(const DoubleVec& b) const {
  return solve(DoubleGenMat(b, b.length(), 1)).dataVec();
}

DoubleGenMat DoubleChDecomp::solve(const DoubleGenMat& b) const {
  if (!agree(b.rows(), order(), detail::raiseRightSideLength)) return DoubleGenMat();
  if (factoredColumns() == 0 && !isPD()) detail::raiseNotFactored();
  const PivotedOrder pivoted(pivotsOfFactor(), order());
  DoubleGenMat x = pivoted.permuteRows(b);
  solveInPlace(factoredColumns(), x);
  return pivoted.unpermuteRows(x, factoredColumns());
}

DoubleVec DoubleChDecomp::partialSolve(const DoubleVec& b, unsigned k) const {
  if (!agree(b.length(), order(), detail::raiseRightSideLength)) return DoubleVec();
  if (k > factoredColumns()) detail::raiseNotFactored();
  k = std::min(k, factoredColumns());
  DoubleGenMat x = PivotedOrder(pivotsOfFactor(), order()).permuteRows(DoubleGenMat(b, order(), 1));
  solveInPlace(k, x);
  x.resize(k, 1);
  return x.dataVec();
}

unsigned DoubleChDecomp::factoredColumns() const {
  return info_ > 0 ? std::min(static_cast<unsigned>(info_), order()) : 0;
}

// Whether elimination ended before the last column. Behind the factored rows then stands a
// remainder of A, in units of A; it is no part of R.
bool DoubleChDecomp::isPartial() const {
  return info_ >= 0 && factoredColumns() < order();
}

// Sets the rows of R that are not factored to 0, for rotations to fill.
void DoubleChDecomp::clearUnfactoredRows() {
  if (!isPartial()) return;
  for (int i = info_; i < static_cast<int>(order()); ++i) {
    row(i).slice(i, order() - static_cast<unsigned>(i)) = 0.0;
  }
}

// Counts the factored columns of a partial factor anew after rotations. The columns before `first`
// count as before.
void DoubleChDecomp::growFactoredBlock(int first) {
  if (!isPartial()) return;
  info_ = first;
  while (info_ < static_cast<int>(order()) && isIndependent(info_)) ++info_;
}

// Whether the diagonal element of column j of R is more than the rounding errors of the column.
bool DoubleChDecomp::isIndependent(int j) const {
  const DoubleVec column = col(j).slice(0, static_cast<unsigned>(j) + 1);
  const double tolerance = order() * std::numeric_limits<double>::epsilon();
  return std::abs(column(j)) > tolerance * column.vecLen();
}

// Solves for the leading k columns, which are factored, in the first k rows of X.
void DoubleChDecomp::solveInPlace(unsigned k, DoubleGenMat& x) const {
  const DoubleVec r = contiguous(*this);
  const vxKilnBase::linpack::Submatrix leading = {x.data(), x.rows(), k, x.cols()};
  vxKilnBase::linpack::solveUpperTransposed(r.data(), rows(), leading);
  vxKilnBase::linpack::solveUpper(r.data(), rows(), leading);
}

DoubleVec DoubleChDecomp::permute(const DoubleVec& v) const {
  if (!agree(v.length(), order(), detail::raisePermutedLength)) return v.copy();
  return PivotedOrder(pivotsOfFactor(), order()).permute(v);
}

DoubleVec DoubleChDecomp::unpermute(const DoubleVec& v) const {
  if (!agree(v.length(), order(), detail::raisePermutedLength)) return v.copy();
  return PivotedOrder(pivotsOfFactor(), order()).unpermute(v);
}

void DoubleChDecomp::shift(int first, int last, int direction, DoubleGenMat* z, DoubleVec* c,
                           DoubleVec* s) {
  const bool hasDirection = direction == 0 || direction == 1;
  if (!hasDirection) detail::raiseShiftDirection();
  const bool hasColumns = first >= 0 && first < last && last < static_cast<int>(order());
  if (!hasColumns) detail::raiseShiftColumns(first, last);
  const unsigned rotations = hasColumns ? static_cast<unsigned>(last - first) : 0;
  if (z != nullptr && !agree(z->rows(), rows(), detail::raiseDataHeight)) z = nullptr;
  if (hasColumns) dropUnlessLength(c, rotations, detail::raiseRotationsLength);
  if (hasColumns) dropUnlessLength(s, rotations, detail::raiseRotationsLength);
  if (!hasDirection || !hasColumns) return;
  makeContiguous();
  clearUnfactoredRows();
  Result columns(z, 0, 0.0);
  Result cosines(c, rotations, 0.0);
  Result sines(s, rotations, 0.0);
  const auto height = static_cast<int>(rows());
  vxKilnBase::linpack::dchex(data(), height, static_cast<int>(order()), first + 1, last + 1,
                             columns.data(), height, z != nullptr ? static_cast<int>(z->cols()) : 0,
                             cosines.data(), sines.data(), direction == 1 ? 1 : 2);
  growFactoredBlock(std::min(info_, first));
}

// Checks the arguments of `update` and `downdate` and calls `routine` with those of dchud and
// dchdd.
template <class Routine>
int DoubleChDecomp::changeRow(const Routine& routine, const DoubleVec& x, DoubleGenMat* z,
                              const DoubleVec* y, DoubleVec* rho, DoubleVec* c, DoubleVec* s) {
  const unsigned n = order();
  const unsigned columns = z != nullptr ? z->cols() : 0;
  DoubleVec row = x.copy();
  for (const DoubleVec* vec : {y, static_cast<const DoubleVec*>(rho),
                               static_cast<const DoubleVec*>(c), static_cast<const DoubleVec*>(s)})
    if (vec != nullptr && vec->stride() != 1) detail::raiseVectorStride();
  if (!agree(x.length(), n, detail::raiseRightSideLength)) row.resize(n);
  if (z != nullptr && !agree(z->rows(), rows(), detail::raiseDataHeight)) z = nullptr;
  dropUnlessLength(c, n, detail::raiseRotationsLength);
  dropUnlessLength(s, n, detail::raiseRotationsLength);
  dropUnlessLength(y, columns, detail::raiseResidualsLength);
  dropUnlessLength(rho, columns, detail::raiseResidualsLength);

  makeContiguous();
  const DoubleVec elements = y != nullptr ? contiguous(*y) : DoubleVec(columns, 0.0);
  Result data(z, 0, 0.0);
  Result norms(rho, columns, std::numeric_limits<double>::max());
  Result cosines(c, n, 0.0);
  Result sines(s, n, 0.0);
  const auto height = static_cast<int>(rows());
  return routine(this->data(), height, static_cast<int>(n), row.data(), data.data(), height,
                 z != nullptr ? static_cast<int>(columns) : 0, elements.data(), norms.data(),
                 cosines.data(), sines.data());
}

void DoubleChDecomp::update(const DoubleVec& x, DoubleGenMat* z, const DoubleVec* y, DoubleVec* rho,
                            DoubleVec* c, DoubleVec* s) {
  const auto routine = [this](auto... arguments) {
    clearUnfactoredRows();
    vxKilnBase::linpack::dchud(arguments...);
    return 0;
  };
  changeRow(routine, x, z, y, rho, c, s);
  growFactoredBlock(info_);
}

int DoubleChDecomp::downdate(const DoubleVec& x, DoubleGenMat* z, const DoubleVec* y,
                             DoubleVec* rho, DoubleVec* c, DoubleVec* s) {
  const auto routine = [this](auto... arguments) {
    return isPartial() ? -1 : vxKilnBase::linpack::dchdd(arguments...);
  };
  return changeRow(routine, x, z, y, rho, c, s);
}
