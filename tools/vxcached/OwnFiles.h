// The daemon's own files in the cache directory. No client's file has such a name.
#pragma once

#include <string_view>

#include <kilnbase/net/FileCacheProtocol.h>
#include <vx/Directory.h>

namespace vxcached {

/// The file that is locked as long as a daemon serves the directory, and that holds its port.
inline constexpr const char* kDaemonLockName = "@daemon.lck";
/// The index on disk.
inline constexpr const char* kIndexName = "@index.dat";
/// The private channel.
inline constexpr const char* kChannelName = "@daemon.sock";

inline bool isOwnName(std::string_view name) {
  return name == kDaemonLockName || name == kIndexName || name == kChannelName ||
         name == vxKilnBase::FileCacheProtocol::LockFileName || vxOS::Directory::isTemporary(name);
}

}  // namespace vxcached
