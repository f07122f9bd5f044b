#include <algorithm>
#include <cstddef>
#include <limits>

#include <kilnbase/detail/assert.h>
#include <kilnbase/linalg/DoubleChDecomp.h>
#include <kilnbase/linalg/detail/errors.h>
#include <kilnbase/linalg/linpack/dchdc.h>
#include <kilnbase/linalg/linpack/dchdd.h>
#include <kilnbase/linalg/linpack/dchex.h>
#include <kilnbase/linalg/linpack/dchud.h>
#include <kilnbase/linalg/linpack/triangular.h>

namespace {

namespace detail = vxKilnBase::detail;

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

// Contiguous storage for an optional result: the argument's own where that is contiguous, else
// scratch, which the argument, if any, takes over at the end.
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
  reference(a.copy());
  dofactor();
}

void DoubleChDecomp::dofactor() {
  const auto rowCount = static_cast<int>(rows());
  if (rows() < cols()) detail::raiseTooFewRows(rowCount, static_cast<int>(cols()));
  makeContiguous();
  if (pivoting_ != 0) pvts_.resize(cols());
  pvts_.deepenShallowCopy();
  double few[kSmallOrder];
  const RWBlock many(pivoting_ != 0 && order() > kSmallOrder ? order() : 0, sizeof(double));
  double* work = order() > kSmallOrder ? static_cast<double*>(many.data) : few;
  const bool noMemory = pivoting_ != 0 && work == nullptr;
  info_ = vxKilnBase::linpack::dchdc(data(), rowCount, noMemory ? 0 : static_cast<int>(order()),
                                     work, pvts_.data(), pivoting_ != 0 ? 1 : 0);
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
  if (!agree(b.length(), order(), detail::raiseRightSideLength)) return DoubleVec();
  if (fail() || info_ < 0) detail::raiseNotFactored();
  DoubleVec x = solveLeading(b, factoredColumns());
  x.resize(order());
  return unpermute(x);
}

DoubleVec DoubleChDecomp::partialSolve(const DoubleVec& b, unsigned k) const {
  if (!agree(b.length(), order(), detail::raiseRightSideLength)) return DoubleVec();
  if (k > factoredColumns()) detail::raiseNotFactored();
  return solveLeading(b, std::min(k, factoredColumns()));
}

unsigned DoubleChDecomp::factoredColumns() const {
  return info_ > 0 ? std::min(static_cast<unsigned>(info_), order()) : 0;
}

// Solves for the leading k columns, which have been factored.
DoubleVec DoubleChDecomp::solveLeading(const DoubleVec& b, unsigned k) const {
  DoubleVec x = permute(b);
  x.resize(k);
  const DoubleVec r = contiguous(*this);
  vxKilnBase::linpack::solveUpperTransposed(r.data(), rows(), k, x.data());
  vxKilnBase::linpack::solveUpper(r.data(), rows(), k, x.data());
  return x;
}

// Where element i of the factor's order stands in the order of A.
int DoubleChDecomp::originalPlace(int i) const {
  if (permuted_ == 0 || i >= static_cast<int>(pvts_.length())) return i;
  const int place = pvts_(i);
  return place >= 0 && place < static_cast<int>(order()) ? place : i;
}

DoubleVec DoubleChDecomp::permute(const DoubleVec& v) const {
  DoubleVec result = v.copy();
  if (!agree(v.length(), order(), detail::raisePermutedLength)) return result;
  for (int i = 0; i < static_cast<int>(order()); ++i) result(i) = v(originalPlace(i));
  return result;
}

DoubleVec DoubleChDecomp::unpermute(const DoubleVec& v) const {
  DoubleVec result = v.copy();
  if (!agree(v.length(), order(), detail::raisePermutedLength)) return result;
  for (int i = 0; i < static_cast<int>(order()); ++i) result(originalPlace(i)) = v(i);
  return result;
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
  Result columns(z, 0, 0.0);
  Result cosines(c, rotations, 0.0);
  Result sines(s, rotations, 0.0);
  const auto height = static_cast<int>(rows());
  vxKilnBase::linpack::dchex(data(), height, static_cast<int>(order()), first + 1, last + 1,
                             columns.data(), height, z != nullptr ? static_cast<int>(z->cols()) : 0,
                             cosines.data(), sines.data(), direction == 1 ? 1 : 2);
}

int DoubleChDecomp::changeRow(RowRoutine routine, const DoubleVec& x, DoubleGenMat* z,
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
  const RowRoutine routine = [](auto... arguments) {
    vxKilnBase::linpack::dchud(arguments...);
    return 0;
  };
  changeRow(routine, x, z, y, rho, c, s);
}

int DoubleChDecomp::downdate(const DoubleVec& x, DoubleGenMat* z, const DoubleVec* y,
                             DoubleVec* rho, DoubleVec* c, DoubleVec* s) {
  return changeRow(vxKilnBase::linpack::dchdd, x, z, y, rho, c, s);
}
