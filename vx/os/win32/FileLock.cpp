#include <windows.h>

#include <vx/FileLock.h>
#include <vx/os/win32/Handle.h>
#include <vx/os/win32/Path.h>

namespace vxOS {

// Locks of this system keep other processes from the locked bytes, so the lock is on one byte that
// no file reaches.
bool FileLock::acquire(const vxString::CString& path) {
  release();
  Handle file(CreateFileW(systemPath(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  OVERLAPPED lockedByte = {};
  lockedByte.OffsetHigh = 0x40000000;
  if (!file || LockFileEx(file.get(), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0,
                          &lockedByte) == 0)
    return false;
  file_ = reinterpret_cast<std::intptr_t>(file.release());
  return true;
}

void FileLock::release() {
  if (file_ != kNone) CloseHandle(reinterpret_cast<HANDLE>(file_));
  file_ = kNone;
}

}  // namespace vxOS
