#include <algorithm>

#include <kilnbase/linalg/DoubleSVDecomp.h>
#include <kilnbase/linalg/linpack/dsvdc.h>

namespace {

// Gives the result storage of its own, so that views of the last one keep it.
void renew(DoubleVec& v, unsigned n) {
  v.resize(n);
  v.deepenShallowCopy();
}

void renew(DoubleGenMat& a, unsigned m, unsigned n) {
  a.resize(m, n);
  a.deepenShallowCopy();
}

}  // namespace

void DoubleSVDecomp::factor(const DoubleGenMat& a) {
  const unsigned m = a.rows(), n = a.cols();
  if (leftDigit() != 0) renew(u_, m, leftDigit() == 1 ? m : std::min(m, n));
  if (rightDigit() != 0) renew(v_, n, n);
  renew(singularValues_, std::min(m + 1, n));
  renew(e_, n);
  info_ = 0;
  if (std::min(m, n) > 0) {
    DoubleVec work(m);
    DoubleGenMat x = a.deepCopy();
    const int rows = static_cast<int>(m), columns = static_cast<int>(n);
    info_ =
        vxKilnBase::linpack::dsvdc(x.data(), rows, rows, columns, singularValues_.data(), e_.data(),
                                   u_.data(), rows, v_.data(), columns, work.data(), job_);
  }
  singularValues_.resize(std::min(m, n));
}

int DoubleSVDecomp::computeLeftVecs(int on) {
  const int was = leftDigit();
  if ((on != 0) != (was != 0)) setJob(on != 0 ? 1 : 0, rightDigit());
  return was != 0 ? 1 : 0;
}

int DoubleSVDecomp::computeAllLeftVecs(int on) {
  const int was = leftDigit();
  if (was != 0) setJob(on != 0 ? 1 : 2, rightDigit());
  return was == 1 ? 1 : 0;
}

int DoubleSVDecomp::computeRightVecs(int on) {
  const int was = rightDigit();
  setJob(leftDigit(), on != 0 ? 1 : 0);
  return was;
}
