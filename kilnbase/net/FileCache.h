// A cache of files on disk that a daemon of this machine keeps.
#pragma once

#include <cstdint>

#include <kilnbase/export.h>
#include <vx/Error.h>
#include <vx/Reference.h>
#include <vx/String.h>

namespace vxKilnBase {

/// An entry of the cache that the application holds: the daemon keeps the file as long as a
/// reference to the item lives.
class KILNBASE_API FileCacheItem : public vx::ReferenceCount {
 public:
  ~FileCacheItem() override;
  /// The key that the item was found or added under.
  virtual const vxString::CString& getKey() const = 0;
  /// The full path of the cached file.
  virtual const vxString::CString& getPath() const = 0;
  /// The time of the last access in seconds since 1970-01-01 UTC.
  virtual std::int64_t getAccessTime() const = 0;
};

/// The application's handle on the cache. Files that are costly to make are kept in a directory and
/// found again by their keys, also by other processes and after a restart.
///
///     vxKilnBase::FileCache cache;
///     const auto mesh = [&cache](const char* key) -> vxString::CString {
///       if (const auto item = cache.find(key)) return item->getPath();
///       const vxString::CString path = cache.generatePath();
///       // ... write the file at `path`, then:
///       const auto item = cache.add(key, path);
///       return item ? item->getPath() : path;
///     };
///     puts(mesh("wing-0.01").c_str());
///
/// The cache finds the daemon of the directory or starts it (the program "vxcached"). A daemon that
/// does not answer costs one call at most 10 seconds; from then on everything is not found and
/// refused. There is no reconnection.
///
/// A copy of a cache is a second handle on it: the cache ends with the object that was constructed
/// by default, or with the one that this object was moved to. Handles that outlive the cache find
/// nothing.
///
/// A cache and its items are for one thread at a time.
class KILNBASE_API FileCache {
 public:
  FileCache();
  FileCache(const FileCache& other);
  FileCache(FileCache&& other) noexcept;
  FileCache& operator=(const FileCache& other);
  FileCache& operator=(FileCache&& other) noexcept;
  /// Ends the connection. Items that are still held stay readable, and their files' entries are
  /// released by the daemon.
  ~FileCache();

  /// Connects to the daemon of `directory`, which is started when there is none. Must be called
  /// once, before the others, which find nothing until it has succeeded. `n` is the most files and
  /// `m` the most bytes that the cache may hold; 0 and less stand for no limit.
  vxUtil::Error initialize(const vxString::CString& directory, int n, std::int64_t m);

  /// The item of the key; null when the cache does not hold the key. Nothing is sent for a key
  /// whose item the application holds already.
  vx::Reference<FileCacheItem> find(const vxString::CString& key);

  /// Puts the file at `path` into the cache; null when the daemon refuses. The file must lie
  /// directly in the cache directory, as `generatePath` has it. Kept as it is: an item of the same
  /// key that the application holds stays alive, but `find` knows the new item only, and after the
  /// end of either of the two asks the daemon again.
  vx::Reference<FileCacheItem> add(const vxString::CString& key, const vxString::CString& path);

  /// Has the entry deleted when the last reference to the item goes.
  void remove(vx::Reference<FileCacheItem> item);

  /// Records an access now.
  void setAccessed(const vx::Reference<FileCacheItem>& item);

  /// A new path in the cache directory for a file that the caller is about to write. Nothing is
  /// made on disk.
  vxString::CString generatePath() const;

 private:
  struct VX_LOCAL CacheImpl;
  struct VX_LOCAL Handle;

  vx::Reference<Handle> handle_;
  bool owns_;
};

}  // namespace vxKilnBase
