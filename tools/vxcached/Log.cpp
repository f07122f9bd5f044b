#include "tools/vxcached/Log.h"

#include <ctime>

#include <vx/File.h>

namespace vxcached {

using vxString::CString;
using vxUtil::Error;

Error Log::open(const CString& path) {
  file_.reset(vxOS::openFile(path.view(), "a"));
  return file_ ? Error() : Error(1, "cannot write the log \"" + path + "\"");
}

void Log::write(const CString& text) {
  const std::lock_guard guard(mutex_);
  if (!file_) return;
  const std::time_t now = std::time(nullptr);
  char time[32] = "";
  std::strftime(time, sizeof time, "%Y-%m-%dT%H:%M:%SZ", std::gmtime(&now));
  std::fprintf(file_.get(), "%s %s\n", time, text.c_str());
  std::fflush(file_.get());
}

}  // namespace vxcached
