// File names made into paths.
#pragma once

#include <cstddef>
#include <optional>

#include <vx/String.h>

namespace vxKilnBase::detail {

/// The most characters of an expanded path.
constexpr std::size_t kLongestPath = 260;

struct Expansion {
  std::optional<vxString::CString> path;  // nothing when the path is too long
  bool isWhole = false;                   // the path is that of the name, not of the folder alone
};

/// The path of `name`, with the rules of `expand_filename`.
Expansion expand(char* name, int type);

/// Copies the text with a terminator.
void copyText(char* out, const vxString::CString& text);

/// Whether there is a file or folder.
bool exists(const vxString::CString& path);

}  // namespace vxKilnBase::detail
