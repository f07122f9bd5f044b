// The protection of files that nobody but this user may read and write.
#pragma once

#include <memory>
#include <windows.h>

namespace vxOS {

/// The list of who has access: the user of this process, and nobody by inheritance from the folder.
class OwnerOnly {
 public:
  OwnerOnly();
  OwnerOnly(const OwnerOnly&) = delete;
  OwnerOnly& operator=(const OwnerOnly&) = delete;

  /// For functions that make a file; null when the system does not tell who the user is.
  SECURITY_ATTRIBUTES* get() { return isComplete_ ? &attributes_ : nullptr; }

 private:
  bool allowUser();

  std::unique_ptr<std::byte[]> list_;
  SECURITY_DESCRIPTOR descriptor_ = {};
  SECURITY_ATTRIBUTES attributes_ = {sizeof attributes_, &descriptor_, FALSE};
  bool isComplete_ = false;
};

}  // namespace vxOS
