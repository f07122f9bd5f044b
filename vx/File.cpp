#include <new>

#include <vx/File.h>
#include <vx/os/File.h>

namespace vxOS {

std::FILE* openFile(std::string_view path, const char* mode) noexcept {
  try {
    return path.find('\0') != path.npos ? nullptr : file::open(vxString::CString(path), mode);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace vxOS
