// Which files the cache holds, who holds them, and which go when room is needed.
//
// An entry is a key with a file. Each `add` of a key begins a new generation of the key; a file of
// an older generation stays as long as a client holds it. A file that is added to its key again
// passes to the new generation, and the older one has no file any more. Nothing here waits for a
// client, and the disk is reached through an `EntryStore` only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <vx/Directory.h>

namespace vxcached {

struct Entry {
  std::string key;
  std::string name;  ///< Of the file, in the cache directory.
  vxOS::FileFacts facts;
  std::int64_t accessTime = 0;  ///< In seconds since 1970-01-01 UTC.
  std::uint64_t generation = 0;
};

/// Whether a client's file may have this name.
bool isEntryName(std::string_view name);

/// What the index needs of the disk. What a function of the name `save...` has saved is known to
/// the next daemon, also when this one is killed.
class EntryStore {
 public:
  virtual ~EntryStore() = default;
  virtual vxOS::FileFacts query(const std::string& name) = 0;
  virtual void remove(const std::string& name) = 0;
  /// False when that fails.
  virtual bool saveEntry(const Entry& entry) = 0;
  virtual void saveAccess(const Entry& entry) = 0;
  virtual void saveRemoval(const Entry& entry) = 0;
};

struct Limits {
  std::int64_t files = 0;  ///< 0 and less: no limit.
  std::int64_t bytes = 0;  ///< The same.
};

/// A map from texts that finds a view without making a text of it.
struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const {
    return std::hash<std::string_view>()(text);
  }
};
template <class Value>
using TextMap = std::unordered_map<std::string, Value, TextHash, std::equal_to<>>;

class CacheIndex {
  struct Slot;

 public:
  static constexpr std::size_t kMostKeyBytes = 65536;
  /// Generations count from 1; no daemon lives until this one.
  static constexpr std::uint64_t kMostGeneration = std::uint64_t{1} << 62;

  static bool isKey(std::string_view key) { return !key.empty() && key.size() <= kMostKeyBytes; }

  /// What one client holds. Belongs to one index and is empty when it is destroyed.
  class Client {
    friend class CacheIndex;
    struct Hold {
      Slot* slot;
      std::size_t count;
    };
    TextMap<std::vector<Hold>> holds_;  // the oldest generation first
  };

  /// An entry as `list` tells it.
  struct Listed {
    Entry entry;
    std::size_t holders;  ///< Clients that hold the entry.
    bool isCurrent;       ///< False when the file goes with its last hold.
  };

  explicit CacheIndex(EntryStore& store) : store_(store) {}
  CacheIndex(const CacheIndex&) = delete;
  CacheIndex& operator=(const CacheIndex&) = delete;

  /// Takes over what is saved, in the order in which it was saved.
  void restoreEntry(Entry entry);
  void restoreAccess(std::uint64_t generation, std::int64_t accessTime);
  void restoreRemoval(std::uint64_t generation);
  /// Ends the restoring: entries whose files are gone or changed are dropped.
  void finishRestore();

  void setLimits(const Limits& limits);
  const Limits& limits() const { return limits_; }

  /// Holds the entry of the key; null when there is none. Counts as an access for the order in
  /// which entries go, but leaves the access time.
  const Entry* acquire(Client& client, std::string_view key);
  /// Makes the file the entry of the key and holds the entry. False when the key is empty or too
  /// long, when the file is not the user's own or belongs to another key, and when the entry cannot
  /// be saved.
  bool add(Client& client, const std::string& key, const std::string& name, std::int64_t now);
  /// Gives one hold back, of the oldest generation of the key that the client holds. With `remove`
  /// that generation goes, its file when nobody holds it any more. False when the client holds
  /// nothing of the key.
  bool release(Client& client, std::string_view key, bool remove);
  void setAccessed(std::string_view key, std::int64_t now);
  void releaseAll(Client& client);

  /// Gives up entries whose files somebody has deleted or changed, so that they take no room. Looks
  /// at no more than `most` entries, and at the next ones the next time.
  void forgetMissing(std::size_t most);

  /// Whether a file is in use here.
  bool owns(const vxOS::FileFacts& facts) const { return byIdentity_.contains(facts.identity); }
  /// Entries, those of older generations included.
  std::size_t size() const { return slots_.size(); }
  std::uint64_t bytes() const { return bytes_; }
  /// In the order in which the entries go when room is needed.
  std::vector<Listed> list() const;

 private:
  struct Slot {
    Entry entry;
    std::uint64_t order;
    std::size_t holds = 0;
    std::size_t holders = 0;
    bool isCurrent = true;
  };

  bool isThere(const Slot& slot);
  bool hasFile(const Slot& slot);
  Slot* find(std::string_view key);
  Slot& insert(Entry entry);
  Slot* owner(const vxOS::FileFacts& facts);
  bool isForeign(const std::string& key, const std::string& name, const vxOS::FileFacts& facts);
  void loseFile(Slot& slot);
  void loseOwner(const vxOS::FileFacts& facts);
  void touch(Slot& slot);
  void hold(Client& client, Slot& slot);
  void dropHold(Slot& slot);
  void retire(Slot& slot);
  void forget(Slot& slot);
  void erase(Slot& slot);
  bool isOverLimit() const;
  void evict();

  EntryStore& store_;
  Limits limits_;
  std::map<std::uint64_t, Slot> slots_;  // by generation
  TextMap<Slot*> current_;
  std::unordered_map<std::uint64_t, Slot*> byIdentity_;  // every slot that has a file
  std::map<std::uint64_t, Slot*> idle_;  // current and held by nobody, the oldest access first
  std::uint64_t bytes_ = 0;
  std::uint64_t clock_ = 0;
  std::uint64_t lastGeneration_ = 0;
  std::uint64_t lastLooked_ = 0;  // the generation at which `forgetMissing` has stopped
};

}  // namespace vxcached
