// Copies of texts that callers free with `free`.
#pragma once

#include <cstdlib>
#include <cstring>
#include <string_view>

namespace vxKilnBase::detail {

/// A copy with a terminator, from `malloc`; null when there is no memory.
inline char* heapText(std::string_view text) {
  auto* const copy = static_cast<char*>(std::malloc(text.size() + 1));
  if (!copy) return nullptr;
  if (!text.empty()) std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  return copy;
}

}  // namespace vxKilnBase::detail
