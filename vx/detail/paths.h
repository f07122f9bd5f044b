// Paths as texts, the same on every system.
#pragma once

#include <string_view>

namespace vxOS::detail {

constexpr std::string_view kSeparators = "/\\";

constexpr bool isSeparator(char c) {
  return kSeparators.find(c) != std::string_view::npos;
}

/// Without the separators at the end.
constexpr std::string_view withoutSeparators(std::string_view path) {
  return path.substr(0, path.find_last_not_of(kSeparators) + 1);
}

/// Whether a system function would take a part for the whole text.
constexpr bool holdsZero(std::string_view text) {
  return text.find('\0') != std::string_view::npos;
}

}  // namespace vxOS::detail
