// Files that somebody else has named.
#pragma once

#include <cstdint>
#include <cstdio>

#include <vx/Error.h>
#include <vx/String.h>
#include <vx/export.h>

namespace vxOS {

/// A file that is read only when it is this user's own: a regular file of this user with one name,
/// on a disk of this machine. Links, folders, pipes, devices and files on network shares are not
/// opened. Links among the folders of the path are followed.
///
///     vxOS::OwnFile file;
///     if (const vxUtil::Error error = file.open("frame.mesh")) puts(error.message().c_str());
class VX_API OwnFile {
 public:
  OwnFile() = default;
  ~OwnFile() { close(); }
  OwnFile(const OwnFile&) = delete;
  OwnFile& operator=(const OwnFile&) = delete;

  /// Opens the file for binary reading, and closes the one before.
  vxUtil::Error open(const vxString::CString& path);
  /// Whether there is an open file.
  bool isOpen() const { return stream_ != nullptr; }
  /// The file, which this object closes. Null when none is open.
  std::FILE* stream() const { return stream_; }
  /// The number of bytes when the file was opened.
  std::uint64_t size() const { return size_; }

  /// Deletes the file and closes it. A file that somebody has put in the place of the open one
  /// stays; that is an error.
  vxUtil::Error remove();
  /// Closes the file, which stays.
  void close() noexcept;

 private:
  vxUtil::Error openOwn(const vxString::CString& path);
  void closeFolder() noexcept;

  static constexpr std::intptr_t kNone = -1;

  std::FILE* stream_ = nullptr;
  std::uint64_t size_ = 0;
  vxString::CString path_;
  std::intptr_t folder_ = kNone;  // the folder of the file, where the system needs it
};

}  // namespace vxOS
