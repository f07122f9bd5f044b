// Files, folders and file systems.
//
// Paths are UTF-8, with `\` or `/` between the names, of any length that the system accepts. A path
// that holds a zero byte names nothing.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string_view>

#include <vx/Containers.h>
#include <vx/Error.h>
#include <vx/String.h>
#include <vx/export.h>

namespace vxOS {

/// `fopen` for a path of the application. Null when the file cannot be opened, when the path holds
/// a zero byte, and when there is no memory. Programs that this process starts do not inherit the
/// file.
VX_API std::FILE* openFile(std::string_view path, const char* mode) noexcept;

/// What there is under a path. Links are followed.
struct FileStatus {
  /// False leaves all other members at their values here.
  bool exists = false;
  bool isDirectory = false;
  std::uint32_t type = 0;     ///< The bits of `st_mode` in S_IFMT, such as S_IFREG.
  std::uint64_t size = 0;     ///< In bytes.
  std::int64_t modified = 0;  ///< In seconds since 1970-01-01 UTC.
};

/// Questions about files and folders by their paths, and what changes folders.
class VX_API File {
 public:
  /// Tells what there is under `path`. A path under which there is nothing is no error; a path that
  /// the system does not let us look at is one.
  static vxUtil::Error query(const vxString::CString& path, FileStatus& status);

  /// Whether this process may write to the file, or make files in the folder. False where there is
  /// nothing. On Windows the file is open for writing during the call, which keeps programs that do
  /// not share it for writing from opening it.
  static bool isWritable(const vxString::CString& path);

  /// Makes the folder and all its missing parents. A folder that exists is no error.
  static vxUtil::Error makeDirectoryAll(const vxString::CString& path);

  /// Appends the names of all entries of a folder to `names`, "." and ".." with the others where
  /// the system has them, in the system's order.
  static vxUtil::Error readDirectory(const vxString::CString& path,
                                     vx::vector<vxString::CString>& names);

  /// Deletes a file. A file that does not exist is an error.
  static vxUtil::Error remove(const vxString::CString& path);
};

/// The size of a file system.
struct FilesystemStatus {
  /// Used and free.
  std::uint64_t totalKilobytes = 0;
  std::uint64_t freeKilobytes = 0;  ///< For this user.
};

/// Questions about file systems.
class VX_API Filesystem {
 public:
  /// Tells about the file system that holds `path`. False when the system cannot tell.
  static bool stat(const vxString::CString& path, FilesystemStatus& status);
};

/// The folder for temporary files: the environment variable TMPDIR when it is set and not empty,
/// else "c:\Temp" on Windows and "/tmp" elsewhere.
VX_API vxString::CString temporaryDirectory();

/// Makes a new empty file in the folder for temporary files, which only this user may read and
/// write, and returns its path. Empty when no file can be made. The caller deletes the file.
/// Whoever may rename files in that folder can put another file under the path.
VX_API vxString::CString createTmpFilename();

}  // namespace vxOS
