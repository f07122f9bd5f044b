// Texts on their way to the operating system.
#pragma once

#include <string_view>

namespace vxOS {

/// Whether the text holds a zero, where the system would take it to end.
inline bool holdsZero(std::string_view text) {
  return text.find('\0') != text.npos;
}

}  // namespace vxOS
