// A handle of the system that is closed with its object.
#pragma once

#include <utility>
#include <windows.h>

namespace vxOS {

class Handle {
 public:
  explicit Handle(HANDLE handle) : handle_(handle != INVALID_HANDLE_VALUE ? handle : nullptr) {}
  ~Handle() {
    if (handle_ != nullptr) CloseHandle(handle_);
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  HANDLE get() const { return handle_; }
  /// Whether there is a handle.
  explicit operator bool() const { return handle_ != nullptr; }
  HANDLE release() { return std::exchange(handle_, nullptr); }

 private:
  HANDLE handle_;
};

}  // namespace vxOS
