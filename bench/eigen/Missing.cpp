#include "families/Families.h"

namespace bench {

std::string addEigen(Suite&) {
  return "Eigen: not installed when this program was built, left out (libeigen3-dev)";
}

}  // namespace bench
