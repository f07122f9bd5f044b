// The cache of one directory: its lock, its index and its files. All functions may be called by
// several threads at once.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include <vx/Directory.h>
#include <vx/Error.h>
#include <vx/String.h>

#include "tools/vxcached/CacheIndex.h"
#include "tools/vxcached/Journal.h"
#include "tools/vxcached/Log.h"

namespace vxcached {

/// A path taken apart at its last separator.
struct SplitPath {
  explicit SplitPath(std::string_view path);

  vxString::CString folder;  ///< Without separators at the end, but for a root.
  vxString::CString name;
};

class Cache : EntryStore {
 public:
  using Client = CacheIndex::Client;

  explicit Cache(Log& log) : log_(log), index_(*this) {}
  /// Saves the order of the entries, and removes the port from the directory.
  ~Cache() override;

  /// Makes the directory when it is missing, and takes its lock; `isTaken` tells that another
  /// daemon has the lock, which is no error.
  vxUtil::Error lock(const vxString::CString& directory, bool& isTaken);
  /// After `lock`: tells other daemons the port, restores the entries, and tells clients the port.
  vxUtil::Error open(int port);

  const vxOS::Directory& directory() const { return directory_; }
  /// False when somebody has deleted the locked file: another daemon may have the directory then.
  /// Nothing is accepted any more.
  bool hasLock() const { return lock_.isInPlace(directory_); }
  bool isAt(const vxString::CString& path) const { return directory_.isAt(path); }
  /// An error that tells how another user could change what is in the directory.
  vxUtil::Error requirePrivate() const { return directory_.requirePrivate(); }

  void setLimits(const Limits& limits);
  /// False when there is no entry of the key; else `path` is `start` and the name of the file.
  bool acquire(Client& client, std::string_view key, const vxString::CString& start,
               vxString::CString& path, std::int64_t& accessTime);
  bool add(Client& client, std::string_view key, const vxString::CString& name);
  bool release(Client& client, std::string_view key, bool remove);
  void setAccessed(std::string_view key);
  void releaseAll(Client& client);

  /// Writes the file with the port for clients when it is not there.
  void keepPortFile();
  /// Removes that file when it is this daemon's.
  void removePortFile();
  /// Removes the file for good.
  void retire();
  /// Deletes files that no entry names and that are a day old at the time `now`, in seconds since
  /// 1970-01-01 UTC: those named by a UUID, and the daemon's temporaries. A file that came after
  /// the daemon's start may be about to be added, how old its content may be.
  void clearAway(std::int64_t now);
  /// Saves the removals for which the disk had no room.
  void saveRest();
  std::string listing();

 private:
  vxOS::FileFacts query(const std::string& name) override;
  void remove(const std::string& name) override;
  bool saveEntry(const Entry& entry) override;
  void saveAccess(const Entry& entry) override;
  void saveRemoval(const Entry& entry) override;

  void rewriteWhenWorth();
  void clearAway(const vxString::CString& name, std::int64_t before);
  std::string portText() const;

  Log& log_;
  std::mutex mutex_;
  vxOS::Directory directory_;
  vxOS::DirectoryFile lock_;
  Journal journal_;
  CacheIndex index_;
  int port_ = 0;
  std::int64_t start_ = 0;  // in nanoseconds since 1970-01-01 UTC
  bool isRetired_ = false;
};

}  // namespace vxcached
