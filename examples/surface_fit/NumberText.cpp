#include "examples/surface_fit/NumberText.h"

#include <charconv>
#include <cmath>

namespace surfacefit {

std::string numberText(double value) {
  const double size = std::abs(value);
  const bool plain = size == 0.0 || (size >= 1e-6 && size < 1e16);
  char text[32];
  const auto [end, error] =
      std::to_chars(text, text + sizeof text, value,
                    plain ? std::chars_format::fixed : std::chars_format::scientific);
  return {text, end};
}

std::string placeText(double x, double y) {
  return std::string(1, '(').append(numberText(x)).append(", ").append(numberText(y)).append(")");
}

}  // namespace surfacefit
