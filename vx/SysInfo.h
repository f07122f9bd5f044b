// Facts about the system and this application.
#pragma once

#include <cstddef>
#include <cstdint>

#include <vx/String.h>

namespace vxOS {

/// Sizes of memory in kilobytes (1024 bytes).
struct MemoryFigures {
  std::uint64_t totalPhysical = 0;      ///< Physical memory, used and free.
  std::uint64_t availablePhysical = 0;  ///< What can be had of it now.
  std::uint64_t totalVirtual = 0;       ///< Physical memory and paging files.
  std::uint64_t availableVirtual = 0;   ///< What can be had of both now.
};

/// Facts about the machine, for this process.
class VX_API SysInfo {
 public:
  /// The size of a page of memory in bytes.
  static std::size_t getPageSize();

  /// The memory that this process may have: of the machine, or of the container that the process
  /// runs in when that has less. Limits of the process itself count as well: on POSIX the one of
  /// the address space (for virtual memory), on Windows those of the job. Zeros for figures that
  /// the system does not tell. The call reads some small files of the system.
  static MemoryFigures getMemory();

  /// Replaces the source of `getMemory`, for a host that has limits of its own. Null brings the
  /// system's figures back. For the application's main thread.
  static void setMemorySource(MemoryFigures (*source)());
};

}  // namespace vxOS

/// The path of a program of the application. The program is looked for beside the one that this
/// process runs, and then in the folder of programs of the installation that libvx belongs to (for
/// libraries in `lib/` and in `lib/x86_64-linux-gnu/` alike). When neither has the program, the
/// path is the one beside the running program; empty when that is not known. On Windows ".exe" is
/// added when `name` does not end so.
VX_API vxString::CString APP_getBinaryPath(const vxString::CString& name);

/// Sets the one folder that holds the application's programs. `APP_getBinaryPath` then gives paths
/// in that folder and looks nowhere. "" brings the folders of the start back. For the application's
/// main thread.
VX_API void APP_setBinaryFolder(const vxString::CString& folder);
