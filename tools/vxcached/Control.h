// Questions about the running daemon of a directory, through a private channel of the directory.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include <vx/Error.h>
#include <vx/LocalChannel.h>

#include "tools/vxcached/Cache.h"
#include "tools/vxcached/Log.h"

namespace vxcached {

/// The daemon's end: answers until its own end.
class Control {
 public:
  /// `stop` ends the daemon. Without a channel the daemon goes on and says so in the log.
  Control(Cache& cache, Log& log, std::function<void()> stop);
  /// Waits for the end of the answer that is being given.
  ~Control();
  /// Answers nothing new.
  void end() noexcept;
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;

 private:
  vxString::CString answer(const vxString::CString& question);

  Cache& cache_;
  std::function<void()> stop_;
  vxOS::LocalChannel channel_;
  std::atomic<bool> isEnding_ = false;
  std::thread thread_;
};

/// The text that tells about the daemon of the directory.
vxUtil::Error listCache(const vxString::CString& directory, vxString::CString& text);
/// Ends the daemon of the directory and waits for its end.
vxUtil::Error stopDaemon(const vxString::CString& directory);

}  // namespace vxcached
