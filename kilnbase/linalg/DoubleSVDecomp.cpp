#include <algorithm>

#include <kilnbase/linalg/DoubleSVDecomp.h>
#include <kilnbase/linalg/linpack/dsvdc.h>

void DoubleSVDecomp::factor(const DoubleGenMat& a) {
  const unsigned m = a.rows(), n = a.cols(), order = std::min(m, n);
  const bool left = leftDigit() != 0, right = rightDigit() != 0;
  // New storage: views of the earlier results keep theirs.
  DoubleGenMat x = a.copy(), u = u_, v = v_;
  if (left) u.reference(DoubleGenMat(m, leftDigit() == 1 ? m : order, 0.0));
  if (right) v.reference(DoubleGenMat(n, n, 0.0));
  DoubleVec values(std::min(m + 1, n)), e(n, 0.0), work(m);
  const unsigned triangleOrder = vxKilnBase::linpack::isTall(m, n) ? n : 0;
  DoubleGenMat triangle(triangleOrder, triangleOrder + 1);
  const bool stored = x.rows() == m && e.length() == n && work.length() == m &&
                      values.length() >= order && triangle.rows() == triangleOrder;
  if (!stored || (left && u.rows() != m) || (right && v.rows() != n)) return;
  const int rows = static_cast<int>(m), columns = static_cast<int>(n);
  info_ =
      vxKilnBase::linpack::dsvdc(x.data(), rows, rows, columns, values.data(), e.data(), u.data(),
                                 rows, v.data(), columns, work.data(), job_, triangle.data());
  values.resize(order);
  singularValues_.reference(values);
  e_.reference(e);
  u_.reference(u);
  v_.reference(v);
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
