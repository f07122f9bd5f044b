#include <algorithm>

#include <kilnbase/linalg/DoubleSymEig.h>
#include <kilnbase/linalg/detail/errors.h>
#include <kilnbase/linalg/linpack/symmetricEigen.h>

namespace detail = vxKilnBase::detail;
using vxKilnBase::kernels::Index;
using vxKilnBase::linpack::EigenOutcome;
using vxKilnBase::linpack::SymmetricProblem;

namespace {

// The lower triangle of a matrix as the routine wants it, and its scratch: on the stack for small
// matrices.
class Workspace {
 public:
  explicit Workspace(unsigned order)
      : n_(order),
        ld_(SymmetricProblem::strideFor(n_)),
        block_(RWBlock::create(n_ <= kMostInPlace ? 0U : order + kFurtherColumns,
                               static_cast<std::size_t>(ld_) * sizeof(double))),
        data_(n_ <= kMostInPlace ? inPlace_ : static_cast<double*>(block_->data)) {}
  ~Workspace() { RWBlock::release(block_); }
  Workspace(const Workspace&) = delete;
  Workspace& operator=(const Workspace&) = delete;

  bool stored() const { return data_ != nullptr; }

  SymmetricProblem load(const DoubleSymMat& a, double* values) const {
    std::fill_n(data_, n_ * ld_, 0.0);
    for (Index i = 0; i < n_; ++i) {
      for (Index j = 0; j <= i; ++j) {
        data_[i + j * ld_] = a(static_cast<int>(i), static_cast<int>(j));
      }
    }
    double* beside = data_ + n_ * ld_;
    return {n_, data_, ld_, values, beside, beside + ld_};
  }

 private:
  static constexpr Index kMostInPlace = 16;
  static constexpr unsigned kFurtherColumns = 1 + SymmetricProblem::kWorkColumns;

  alignas(64) double inPlace_[kMostInPlace * (kMostInPlace + kFurtherColumns)];
  Index n_;
  Index ld_;
  RWBlock* block_;  // aligned for the kernels, too
  double* data_;
};

void raise(EigenOutcome outcome) {
  if (outcome == EigenOutcome::kNotFinite) {
    detail::raiseEigenvalues("an element of the matrix is infinite or not a number");
  }
  if (outcome == EigenOutcome::kNotConverged) {
    detail::raiseEigenvalues("the iteration does not converge");
  }
}

}  // namespace

void DoubleSymEig::factor(const DoubleSymMat& a) {
  const unsigned n = a.rows();
  // New storage: views of the earlier results keep theirs.
  DoubleVec values(n);
  DoubleGenMat v = v_;
  if (vectors_ != 0) v.reference(DoubleGenMat(n, n));
  Workspace workspace(n);
  if (values.length() != n || (vectors_ != 0 && v.rows() != n) || !workspace.stored()) return;
  const EigenOutcome outcome = vxKilnBase::linpack::symmetricEigen(
      workspace.load(a, values.data()), vectors_ != 0 ? v.data() : nullptr, n);
  raise(outcome);
  failed_ = outcome == EigenOutcome::kFound ? 0 : 1;
  values_.reference(values);
  v_.reference(v);
}
