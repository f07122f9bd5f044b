#include <utility>

#include <vx/OwnFile.h>
#include <vx/detail/paths.h>

namespace vxOS {

using vxString::CString;
using vxUtil::Error;

Error OwnFile::open(const CString& path) {
  close();
  if (detail::holdsZero(path.view())) return {1, "a path that holds a zero byte"};
  Error error = openOwn(path);
  if (error) close();
  path_ = path;
  return error;
}

void OwnFile::close() noexcept {
  if (const auto stream = std::exchange(stream_, nullptr)) std::fclose(stream);
  closeFolder();
}

}  // namespace vxOS
