#include <vx/File.h>

namespace vxOS {

std::FILE* openFile(const vxString::CString& path, const char* mode) {
  return std::fopen(path.replaced("\\", "/").c_str(), mode);
}

}  // namespace vxOS
