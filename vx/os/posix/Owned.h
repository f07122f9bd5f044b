// A descriptor that is closed with its object.
#pragma once

#include <unistd.h>
#include <utility>

namespace vxOS {

class Owned {
 public:
  explicit Owned(int file) : file_(file) {}
  ~Owned() {
    if (file_ != -1) ::close(file_);
  }
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;

  int get() const { return file_; }
  int release() { return std::exchange(file_, -1); }
  /// Whether there is a descriptor.
  explicit operator bool() const { return file_ != -1; }

 private:
  int file_;
};

}  // namespace vxOS
