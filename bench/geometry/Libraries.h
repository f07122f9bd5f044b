// The libraries whose geometry is measured, compiled with one set of flags.
//
// The sources of this folder are compiled twice, for any x86-64 processor and for this one, each
// time into a shared library of its own: in one program, an inline function compiled for one would
// stand in for that of the other.
#pragma once

#include <string>
#include <vector>

#include "Harness.h"

namespace bench::geometry {

struct Way {
  std::string operation;
  Maker make;
};

struct Library {
  std::string name;  ///< Ours comes first and has none.
  std::vector<Way> ways;
};

namespace baseline {
[[gnu::visibility("default")]] std::vector<Library> libraries();
}
namespace native {
[[gnu::visibility("default")]] std::vector<Library> libraries();
}

}  // namespace bench::geometry
