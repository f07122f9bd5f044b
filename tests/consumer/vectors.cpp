#include <kilnbase/linalg/DoubleVec.h>
#include <kilnbase/linalg/vecmath.h>

// The smallest program that uses vectors; what it takes is the cost of linking statically.
int main() {
  return sum(DoubleVec(3, 1.0)) == 3.0 ? 0 : 1;
}
