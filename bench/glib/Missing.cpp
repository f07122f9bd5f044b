#include "families/Families.h"

namespace bench {

std::string addGlib(Suite&) {
  return "GTree: GLib was not installed when this program was built, left out (libglib2.0-dev)";
}

}  // namespace bench
