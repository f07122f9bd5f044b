#include <vx/Directory.h>
#include <vx/Uuid.h>
#include <vx/detail/paths.h>
#include <vx/os/Directory.h>
#include <vx/os/File.h>

namespace vxOS {

using vxString::CString;
using vxUtil::Error;

namespace {

constexpr std::string_view kTemporaryStart = "@new-";

}  // namespace

Error Directory::make(const CString& path) {
  if (detail::holdsZero(path.view())) return {1, "the path holds a zero byte"};
  int error = directory::makePrivate(path);
  const std::string_view own = detail::withoutSeparators(path.view());
  const std::size_t name = own.find_last_of(detail::kSeparators) + 1;
  if (error != 0 && name > 0 && name < own.size()) {
    if (Error above = make(CString(own.substr(0, name)))) return above;
    error = directory::makePrivate(path);
  }
  if (error != 0)
    return {error, "cannot make the folder \"" + path + "\": " + file::errorText(error)};
  return {};
}

CString Directory::read(const CString& name, std::size_t most) const {
  CString content;
  read(name, most, content);
  return content;
}

bool Directory::isTemporary(std::string_view name) {
  return name.starts_with(kTemporaryStart);
}

// A name that nobody has.
CString Directory::temporaryName() {
  return CString(kTemporaryStart) + Uuid::generate().asString();
}

}  // namespace vxOS
