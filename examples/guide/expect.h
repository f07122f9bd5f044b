// The check of the guides' programs.
#pragma once

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <source_location>

namespace guide {

/// Ends the program with exit code 1, and tells the place, unless `isSo`.
inline void expect(bool isSo, std::source_location place = std::source_location::current()) {
  if (isSo) return;
  std::fprintf(stderr, "%s:%u: what the guide says here is not so\n", place.file_name(),
               static_cast<unsigned>(place.line()));
  std::exit(1);
}

/// Whether two numbers agree to about 12 digits, or to 1e-12 near 0.
inline bool isNear(double a, double b) {
  return std::fabs(a - b) <= 1e-12 * std::fmax(1.0, std::fabs(b));
}

}  // namespace guide
