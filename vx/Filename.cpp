#include <algorithm>

#include <vx/Filename.h>
#include <vx/detail/paths.h>
#include <vx/os/File.h>

namespace vxOS {

using vxString::CString;

namespace {

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isSchemeCharacter(char c) {
  return isLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
}

// Empty for the path of a file.
std::string_view scheme(std::string_view text) {
  const auto end = text.find("://");
  if (end == std::string_view::npos || end < 2) return {};
  const std::string_view name = text.substr(0, end);
  return isLetter(name[0]) && std::all_of(name.begin(), name.end(), isSchemeCharacter)
             ? name
             : std::string_view();
}

}  // namespace

bool Filename::isAbsolute() const {
  const bool hasDrive = isLetter(path_[0]) && path_[1] == ':';
  return detail::isSeparator(path_[hasDrive ? 2 : 0]);
}

char Filename::separator() {
  return file::kSeparator;
}

CString Filename::join(const CString& directory, const CString& name) {
  if (directory.isEmpty()) return name;
  const std::string_view folder = detail::withoutSeparators(directory.view());
  const bool hasSeparator = folder.size() < directory.length();
  const std::size_t start = name.view().find_first_not_of(detail::kSeparators);
  return CString(folder) + (hasSeparator ? directory[folder.size()] : separator()) +
         name.substring(start);
}

bool URL::isLocalFile() const {
  const std::string_view name = scheme(text_.view());
  return name.empty() || CString(name).compareIgnoringCase("file") == 0;
}

}  // namespace vxOS
