// A directory that is open, and the files directly in it.
//
// A name here is one name, without separators. Links are never followed, and the directory stays
// the same one when its path leads elsewhere later.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include <vx/Containers.h>
#include <vx/Error.h>
#include <vx/String.h>
#include <vx/export.h>

namespace vxOS {

/// What tells a file from all others, and one content from another.
struct FileFacts {
  bool isOwnFile = false;      ///< A regular file of this user that has this one name only.
  std::uint64_t size = 0;      ///< In bytes.
  std::int64_t modified = 0;   ///< In nanoseconds since 1970-01-01 UTC.
  std::uint64_t identity = 0;  ///< The number of the file in its file system.

  friend bool operator==(const FileFacts&, const FileFacts&) = default;
};

/// An open directory.
class VX_API Directory {
 public:
  Directory() = default;
  ~Directory();
  Directory(Directory&& other) noexcept
      : handle_(std::exchange(other.handle_, kNone)), path_(std::move(other.path_)) {}
  Directory& operator=(Directory&& other) noexcept {
    std::swap(handle_, other.handle_);
    std::swap(path_, other.path_);
    return *this;
  }

  /// Makes the directory and its missing parents, for this user alone. A directory that exists is
  /// no error.
  static vxUtil::Error make(const vxString::CString& path);

  /// Opens the directory.
  vxUtil::Error open(const vxString::CString& path);
  /// Whether `open` was last called with success, and not `close` since.
  bool isOpen() const { return handle_ != kNone; }
  /// As `open` received it.
  const vxString::CString& path() const { return path_; }

  /// An error that tells how another user could change what is in the directory: the directory
  /// belongs to somebody else, others may write in it, a folder above lets everybody rename what it
  /// holds, or a link of somebody else leads to the directory.
  vxUtil::Error requirePrivate() const;
  /// Whether `path` leads to this directory now.
  bool isAt(const vxString::CString& path) const;

  /// The names of all that is in the directory, but for "." and "..", in no order.
  vx::vector<vxString::CString> names() const;
  /// The facts of a file. `isOwnFile` is false also when there is no such file, and when the system
  /// knows the file by another name than this.
  FileFacts query(const vxString::CString& name) const;
  /// When the content or the attributes of a file have changed last, as its name, in nanoseconds
  /// since 1970-01-01 UTC. A copy may keep the time of the content, but not this one.
  std::int64_t lastChange(const vxString::CString& name) const;
  /// Reads the first `most` bytes of a regular file. What is no regular file is an error, and never
  /// waited for.
  vxUtil::Error read(const vxString::CString& name, std::size_t most,
                     vxString::CString& content) const;
  /// The same; empty when the file cannot be read.
  vxString::CString read(const vxString::CString& name, std::size_t most) const;
  /// Gives a file a new content, for this user alone: whoever looks finds the old content or the
  /// whole new one. The content is written into a file named by `isTemporary`, which stays when
  /// this process is killed.
  vxUtil::Error replace(const vxString::CString& name, std::string_view content) const;
  /// Whether a file of this name is one that `replace` is writing, or was when it was killed.
  static bool isTemporary(std::string_view name);
  /// Deletes a file. False when that fails.
  bool remove(const vxString::CString& name) const;

 private:
  friend class DirectoryFile;
  friend class LocalChannel;
  static constexpr std::intptr_t kNone = -1;
  static vxString::CString temporaryName();

  std::intptr_t handle_ = kNone;
  vxString::CString path_;
};

/// A file of a directory that is open for this user alone.
class VX_API DirectoryFile {
 public:
  DirectoryFile() = default;
  ~DirectoryFile() { close(); }
  DirectoryFile(DirectoryFile&& other) noexcept
      : handle_(std::exchange(other.handle_, Directory::kNone)),
        name_(std::move(other.name_)),
        size_(other.size_) {}
  DirectoryFile& operator=(DirectoryFile&& other) noexcept {
    std::swap(handle_, other.handle_);
    std::swap(name_, other.name_);
    std::swap(size_, other.size_);
    return *this;
  }

  /// Opens the file and makes it when it is missing; a file that is there becomes one for this user
  /// alone. An error also when there is something else than a regular file of this user with one
  /// name.
  vxUtil::Error open(const Directory& directory, const vxString::CString& name);
  /// Closes the file, which stays; a lock goes.
  void close() noexcept;
  /// Whether there is an open file.
  bool isOpen() const { return handle_ != Directory::kNone; }

  /// Takes the file's lock, which goes when the file is closed or the process ends. `isTaken` tells
  /// that somebody else has the lock or that the file has lost its place, which is no error. The
  /// lock keeps nobody from reading. Nobody but this user can open the file and take the lock.
  vxUtil::Error tryLock(const Directory& directory, bool& isTaken);
  /// Whether the directory still has this file under its name. Where the system lets a locked file
  /// be deleted, a second file in the place of the first has a lock of its own.
  bool isInPlace(const Directory& directory) const;

  /// Everything that is in the file.
  vxString::CString read() const;
  /// Writes at the end. On failure the result is false, and the file is as before; when even that
  /// fails, the file is closed.
  bool append(std::string_view bytes);
  /// Cuts the file, or fills it up with zeros. False when that fails.
  bool truncate(std::uint64_t size);

 private:
  std::intptr_t handle_ = Directory::kNone;
  vxString::CString name_;
  std::uint64_t size_ = 0;
};

}  // namespace vxOS
