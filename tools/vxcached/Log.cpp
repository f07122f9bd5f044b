#include "tools/vxcached/Log.h"

#include <ctime>
#include <filesystem>
#include <system_error>

#include <vx/File.h>

namespace vxcached {

using vxString::CString;
using vxUtil::Error;

Error Log::open(const CString& path) {
  file_.reset(vxOS::openFile(path.view(), "a"));
  if (!file_) return {1, "cannot write the log \"" + path + "\""};
  // For this user alone, unless it is a device.
  namespace fs = std::filesystem;
  const fs::path file(reinterpret_cast<const char8_t*>(path.c_str()));
  std::error_code ignored;
  if (fs::is_regular_file(file, ignored))
    fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write, ignored);
  return {};
}

void Log::writeOnce(const CString& text) {
  {
    const std::lock_guard guard(mutex_);
    if (!told_.insert(text).second) return;
  }
  write(text);
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
