// The message catalogues of the library are registered before the program starts.
#include <kilnbase/linalg/MathError.h>

int main() {
  using namespace vxKilnBase;
  const std::uint16_t numbers[] = {kOutOfMemoryError, kMatrixSizesError, kNotFactoredError};
  for (const std::uint16_t number : numbers)
    if (findMathMessage(number) == nullptr) return 1;
  return 0;
}
