#include <vx/os/File.h>

namespace vxOS::file {

std::FILE* open(const vxString::CString& path, const char* mode) {
  return std::fopen(path.replaced("\\", "/").c_str(), mode);
}

}  // namespace vxOS::file
