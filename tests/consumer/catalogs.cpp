// The message catalogues of the library are registered before the program starts.
#include <kilnbase/linalg/MathError.h>

int main() {
  for (const std::uint16_t number : {0x3008, 0x4004, 0x5011})
    if (vxKilnBase::findMathMessage(number) == nullptr) return 1;
  return 0;
}
