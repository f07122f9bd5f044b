// The protection of files that nobody but this user may read and write.
#pragma once

#include <cstddef>
#include <memory>
#include <windows.h>

namespace vxOS {

/// Who the user of a process is: a TOKEN_USER and the identifier that it points to. Null when the
/// system refuses.
std::unique_ptr<std::byte[]> userOf(HANDLE process);
std::unique_ptr<std::byte[]> currentUser();
/// To whom the files belong that this process makes: the user, or the administrators. A TOKEN_OWNER
/// and the identifier that it points to; null when the system refuses.
std::unique_ptr<std::byte[]> ownerOfNewFiles();

/// The list of who has access: the user of this process, and nobody by inheritance from the folder.
class OwnerOnly {
 public:
  OwnerOnly();
  OwnerOnly(const OwnerOnly&) = delete;
  OwnerOnly& operator=(const OwnerOnly&) = delete;

  /// For functions that make a file. The functions fail when the system did not tell who the user
  /// is.
  SECURITY_ATTRIBUTES* get() { return &attributes_; }

 private:
  std::unique_ptr<std::byte[]> list_;
  SECURITY_DESCRIPTOR descriptor_ = {};  // invalid
  SECURITY_ATTRIBUTES attributes_ = {sizeof attributes_, &descriptor_, FALSE};
};

}  // namespace vxOS
