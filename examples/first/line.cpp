//! [program]
#include <cstdio>

#include <kilnbase/kilnbase.h>

int main() {
  // Row i of a is the equation height = slope * x + offset at one point.
  const double x[] = {0.0, 1.0, 2.0, 3.0};
  const double heights[] = {1.1, 2.9, 5.1, 6.9};
  DoubleGenMat a(4, 2, 1.0);
  for (int i = 0; i < 4; ++i) a(i, 0) = x[i];

  const DoubleLeastSqQR fit(a);
  const DoubleVec line = fit.solve(DoubleVec(heights, 4));
  std::printf("slope %.2f, offset %.2f\n", line(0), line(1));
}
//! [program]
