#include <new>

#include <vx/File.h>
#include <vx/os/File.h>
#include <vx/os/Text.h>

namespace vxOS {

std::FILE* openFile(std::string_view path, const char* mode) noexcept {
  try {
    return holdsZero(path) ? nullptr : file::open(vxString::CString(path), mode);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace vxOS
