// Numbers as text.
#pragma once

#include <string>

namespace surfacefit {

/// The shortest decimal text that reads back as `value`, which is finite; with a power of ten only
/// below 1e-6 and from 1e16 on.
std::string numberText(double value);

/// "(x, y)" of such numbers.
std::string placeText(double x, double y);

}  // namespace surfacefit
