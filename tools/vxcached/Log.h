// The daemon's log: a line for each event, with the time.
#pragma once

#include <cstdio>
#include <memory>
#include <mutex>
#include <set>

#include <vx/Error.h>
#include <vx/String.h>

namespace vxcached {

class Log {
 public:
  /// Goes on at the end of the file. Without this nothing is kept.
  vxUtil::Error open(const vxString::CString& path);
  void write(const vxString::CString& text);
  /// For what may happen again and again: only the first time is told.
  void writeOnce(const vxString::CString& text);

 private:
  std::mutex mutex_;
  std::set<vxString::CString> told_;
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_{nullptr, &std::fclose};
};

}  // namespace vxcached
