// The program of the gdb session in docs/guide/debugging.md: the plane through four points.
#include <cmath>

#include <kilnbase/auto/containers/TtupleVector.h>
#include <kilnbase/linalg/DoubleLeastSqQR.h>
#include <kilnbase/util/mr_linklist.h>
#include <kilnbase/util/mr_status.h>

//! [program]
struct Label {
  MR_LinkNode link;
  const char* text;
};

static bool isRight(const DoubleVec& plane) {
  return std::abs(plane(0) - 1.0) < 1e-12;
}

int main() {
  const double coordinates[] = {0, 0, 1, 1, 0, 3, 0, 1, 0, 1, 1, 2};
  const TtupleVector points(3, 4, coordinates);
  DoubleGenMat a(4, 3, 1.0);
  a.col(1) = points.component(0);
  a.col(2) = points.component(1);
  const DoubleVec heights = points.component(2);
  const DoubleLeastSqQR fit(a);
  const DoubleVec plane = fit.solve(heights);  // height = 1 + 2 x - y

  Label first = {{}, "plane"}, second = {{}, "points"};
  MR_LinkList labels = {nullptr};
  MR_ll_append(&labels, &first.link);
  MR_ll_append(&labels, &second.link);
  const StatusCode status = isRight(plane) ? MR_NO_ERROR : MR_INVALID_DATA;
  return status;
}
//! [program]
