#include "families/Families.h"

namespace bench {

std::string addSpdlog(Suite&) {
  return "spdlog: not installed when this program was built, left out (libspdlog-dev)";
}

}  // namespace bench
