// The index on disk: a file of the cache directory to which every change is appended. The next
// daemon goes through the changes; docs/cache-protocol.md tells the format. The end that a killed
// daemon has left torn is cut off.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <vx/Directory.h>
#include <vx/Error.h>

#include "tools/vxcached/CacheIndex.h"

namespace vxcached {

class Journal {
 public:
  /// Opens the file, which is made when it is missing, and restores `index` from it. A file that is
  /// no journal begins anew. `directory` outlives the journal.
  vxUtil::Error open(const vxOS::Directory& directory, CacheIndex& index);

  /// Append a change. False when that fails; the journal is then as before. A removal that cannot
  /// be appended is kept in memory, and appended before the next change.
  bool appendEntry(const Entry& entry);
  bool appendAccess(const Entry& entry);
  bool appendRemoval(const Entry& entry);
  /// Appends the removals that are kept in memory.
  bool appendRest() { return rest_.empty() || append({}); }

  /// Writes the journal anew, with the current entries alone and in their order. On failure the old
  /// journal stays.
  vxUtil::Error rewrite(const std::vector<CacheIndex::Listed>& entries);
  /// Whether most of the journal is about what has passed.
  bool isWorthRewriting(std::size_t entries) const { return records_ > 2 * entries + slack_; }

 private:
  static constexpr std::size_t kSlack = 10000;

  bool append(const std::string& record);
  bool reopen();

  const vxOS::Directory* directory_ = nullptr;
  vxOS::DirectoryFile file_;
  std::string rest_;         // records of removals
  std::uint64_t whole_ = 0;  // bytes of whole records in the file
  std::size_t records_ = 0;
  std::size_t slack_ = kSlack;
};

}  // namespace vxcached
