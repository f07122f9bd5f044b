#include "families/Families.h"

namespace bench {

std::string addBoost(Suite&) {
  return "Boost: not installed when this program was built, left out (libboost-dev)";
}

}  // namespace bench
