// A sign on a file that a process still uses it.
#pragma once

#include <cstdint>

#include <vx/String.h>
#include <vx/export.h>

namespace vxOS {

/// A lock of the system on a whole file. It keeps no process from reading, writing or mapping the
/// file; it keeps other locks away. The system ends the lock with the process, however the process
/// ends, so that a lock that can be acquired tells that its former holder is gone.
///
///     vxOS::FileLock lock;
///     if (!lock.acquire("ring.dat")) puts("in use, or no such file");
class VX_API FileLock {
 public:
  FileLock() = default;
  ~FileLock() { release(); }
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  /// Releases what is held and locks the file, which must exist, without waiting. False when
  /// another lock holds the file, also one of this process, and when the file cannot be opened.
  bool acquire(const vxString::CString& path);
  /// Unlocks. Nothing happens when nothing is held.
  void release();

 private:
  static constexpr std::intptr_t kNone = -1;
  std::intptr_t file_ = kNone;  // the system's descriptor or handle
};

}  // namespace vxOS
