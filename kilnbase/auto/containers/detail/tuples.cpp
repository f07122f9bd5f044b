#include <climits>
#include <cstdlib>

#include <kilnbase/auto/containers/detail/tuples.h>
#include <kilnbase/linalg/detail/errors.h>
#include <vx/Report.h>

namespace vxKilnBase::detail {

std::optional<unsigned> tupleElements(int size, int rows, int cols) {
  if (size < 1 || rows < 1 || cols < 1) return 0;
  const long long tuples = static_cast<long long>(rows) * cols;
  if (tuples <= INT_MAX / size) return static_cast<unsigned>(tuples * size);
  raiseOutOfMemory(kBlockSource);
  return std::nullopt;
}

bool isMovedFrom(const DoubleVec& v) {
  struct Access : DoubleVec {
    using DoubleVec::isMovedFrom;  // is for derived classes
  };
  return (v.*&Access::isMovedFrom)();
}

void failBoundsCheck(const char* reason, int index, const char* file, int line) {
  rptError("**** %s ( %s, %d ) in FILE %s LINE %d\n", "Bounds checking", reason, index, file, line);
  std::abort();
}

}  // namespace vxKilnBase::detail
