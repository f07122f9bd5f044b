#include <vx/File.h>

namespace vxOS {

std::FILE* openFile(const vxString::CString& path, const char* mode) {
  return _wfopen(path.asWide().c_str(), vxString::CString(mode).asWide().c_str());
}

}  // namespace vxOS
