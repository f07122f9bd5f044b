#include "tools/vxcached/CacheIndex.h"

#include <algorithm>
#include <utility>

#include "tools/vxcached/OwnFiles.h"

namespace vxcached {

using vxOS::FileFacts;

bool isEntryName(std::string_view name) {
  constexpr std::string_view kSeparatorsAndZero("/\\\0", 3);
  return !name.empty() && name != "." && name != ".." && !isOwnName(name) &&
         name.find_first_of(kSeparatorsAndZero) == std::string_view::npos;
}

void CacheIndex::restoreEntry(Entry entry) {
  lastGeneration_ = std::max(lastGeneration_, entry.generation);
  if (const auto known = slots_.find(entry.generation); known != slots_.end()) erase(known->second);
  if (const auto older = current_.find(entry.key); older != current_.end()) erase(*older->second);
  loseOwner(entry.facts);
  insert(std::move(entry));
}

void CacheIndex::restoreAccess(std::uint64_t generation, std::int64_t accessTime) {
  const auto known = slots_.find(generation);
  if (known == slots_.end()) return;
  known->second.entry.accessTime = accessTime;
  touch(known->second);
}

void CacheIndex::restoreRemoval(std::uint64_t generation) {
  if (const auto known = slots_.find(generation); known != slots_.end()) erase(known->second);
}

void CacheIndex::finishRestore() {
  std::vector<Slot*> missing;
  for (auto& [generation, slot] : slots_) {
    if (!isThere(slot)) missing.push_back(&slot);
  }
  for (Slot* slot : missing) erase(*slot);
}

void CacheIndex::setLimits(const Limits& limits) {
  limits_ = limits;
  evict();
}

const Entry* CacheIndex::acquire(Client& client, std::string_view key) {
  Slot* slot = find(key);
  if (slot == nullptr) return nullptr;
  hold(client, *slot);
  touch(*slot);
  return &slot->entry;
}

bool CacheIndex::add(Client& client, const std::string& key, const std::string& name,
                     std::int64_t now) {
  if (!isKey(key)) return false;
  const FileFacts facts = store_.query(name);
  if (!facts.isOwnFile || isForeign(key, name, facts)) return false;
  Entry entry{key, name, facts, now, lastGeneration_ + 1};
  if (!store_.saveEntry(entry)) return false;
  ++lastGeneration_;
  loseOwner(facts);
  if (const auto older = current_.find(key); older != current_.end()) retire(*older->second);
  hold(client, insert(std::move(entry)));
  evict();
  return true;
}

bool CacheIndex::release(Client& client, std::string_view key, bool remove) {
  const auto held = client.holds_.find(key);
  if (held == client.holds_.end()) return false;
  auto& [slot, count] = held->second.front();
  Slot& oldest = *slot;
  if (--count == 0) {
    held->second.erase(held->second.begin());
    --oldest.holders;
  }
  if (held->second.empty()) client.holds_.erase(held);
  if (remove && oldest.isCurrent) {
    store_.saveRemoval(oldest.entry);
    retire(oldest);
  }
  dropHold(oldest);
  evict();
  return true;
}

void CacheIndex::setAccessed(std::string_view key, std::int64_t now) {
  Slot* slot = find(key);
  if (slot == nullptr) return;
  slot->entry.accessTime = now;
  touch(*slot);
  store_.saveAccess(slot->entry);
}

void CacheIndex::releaseAll(Client& client) {
  for (auto& [key, generations] : std::exchange(client.holds_, {})) {
    for (const Client::Hold& each : generations) {
      --each.slot->holders;
      for (std::size_t i = 0; i < each.count; ++i) dropHold(*each.slot);
    }
  }
  evict();
}

std::vector<CacheIndex::Listed> CacheIndex::list() const {
  std::vector<const Slot*> ordered;
  ordered.reserve(slots_.size());
  for (const auto& [generation, slot] : slots_) ordered.push_back(&slot);
  std::ranges::sort(ordered, {}, &Slot::order);
  std::vector<Listed> listed;
  listed.reserve(ordered.size());
  for (const Slot* slot : ordered) listed.push_back({slot->entry, slot->holders, slot->isCurrent});
  return listed;
}

// The entry of the key when its file is the one that was added.
CacheIndex::Slot* CacheIndex::find(std::string_view key) {
  const auto found = current_.find(key);
  if (found == current_.end()) return nullptr;
  if (isThere(*found->second)) return found->second;
  forget(*found->second);
  return nullptr;
}

CacheIndex::Slot& CacheIndex::insert(Entry entry) {
  const std::uint64_t generation = entry.generation;
  Slot& slot = slots_.insert_or_assign(generation, Slot{std::move(entry), ++clock_}).first->second;
  current_[slot.entry.key] = &slot;
  byIdentity_[slot.entry.facts.identity] = &slot;
  bytes_ += slot.entry.facts.size;
  idle_[slot.order] = &slot;
  return slot;
}

CacheIndex::Slot* CacheIndex::owner(const FileFacts& facts) {
  const auto found = byIdentity_.find(facts.identity);
  return found == byIdentity_.end() ? nullptr : found->second;
}

// Whether the file belongs to another key. A slot whose file has changed has lost the file.
bool CacheIndex::isForeign(const std::string& key, const std::string& name,
                           const FileFacts& facts) {
  Slot* slot = owner(facts);
  if (slot == nullptr) return false;
  if (slot->entry.key == key && slot->entry.name == name) return false;
  if (isThere(*slot)) return true;
  forget(*slot);
  return false;
}

bool CacheIndex::isThere(const Slot& slot) {
  return owner(slot.entry.facts) == &slot && store_.query(slot.entry.name) == slot.entry.facts;
}

// Whether the name still leads to the file that was added, whatever is in it.
bool CacheIndex::hasFile(const Slot& slot) {
  const FileFacts found = store_.query(slot.entry.name);
  return owner(slot.entry.facts) == &slot && found.isOwnFile &&
         found.identity == slot.entry.facts.identity;
}

// The file is another generation's from now on, or nobody's.
void CacheIndex::loseFile(Slot& slot) {
  if (owner(slot.entry.facts) != &slot) return;
  byIdentity_.erase(slot.entry.facts.identity);
  bytes_ -= slot.entry.facts.size;
  slot.entry.facts = {};
}

void CacheIndex::touch(Slot& slot) {
  const bool isIdle = slot.holds == 0 && slot.isCurrent;
  if (isIdle) idle_.erase(slot.order);
  slot.order = ++clock_;
  if (isIdle) idle_[slot.order] = &slot;
}

void CacheIndex::hold(Client& client, Slot& slot) {
  if (slot.holds++ == 0) idle_.erase(slot.order);
  auto& generations = client.holds_[slot.entry.key];
  if (generations.empty() || generations.back().slot != &slot) {
    generations.push_back({&slot, 0});
    ++slot.holders;
  }
  ++generations.back().count;
}

void CacheIndex::dropHold(Slot& slot) {
  if (--slot.holds > 0) return;
  if (slot.isCurrent)
    idle_[slot.order] = &slot;
  else
    retire(slot);
}

void CacheIndex::loseOwner(const FileFacts& facts) {
  if (Slot* slot = owner(facts)) loseFile(*slot);
}

// Takes an entry from its key. The file goes when nobody holds it, also when its holder has changed
// what is in it.
void CacheIndex::retire(Slot& slot) {
  if (slot.isCurrent) {
    slot.isCurrent = false;
    current_.erase(slot.entry.key);
  }
  if (slot.holds > 0) return;
  if (hasFile(slot)) store_.remove(slot.entry.name);
  erase(slot);
}

// Gives up an entry whose file has changed or is gone.
void CacheIndex::forget(Slot& slot) {
  if (slot.isCurrent) store_.saveRemoval(slot.entry);
  loseFile(slot);
  retire(slot);
}

void CacheIndex::erase(Slot& slot) {
  idle_.erase(slot.order);
  if (slot.isCurrent) current_.erase(slot.entry.key);
  loseFile(slot);
  slots_.erase(slot.entry.generation);
}

bool CacheIndex::isOverLimit() const {
  return (limits_.files > 0 && byIdentity_.size() > static_cast<std::uint64_t>(limits_.files)) ||
         (limits_.bytes > 0 && bytes_ > static_cast<std::uint64_t>(limits_.bytes));
}

void CacheIndex::forgetMissing(std::size_t most) {
  for (std::size_t rest = std::min(most, slots_.size()); rest > 0 && !slots_.empty(); --rest) {
    auto next = slots_.upper_bound(lastLooked_);
    if (next == slots_.end()) next = slots_.begin();
    lastLooked_ = next->first;
    if (!isThere(next->second)) forget(next->second);
  }
}

// Kept entries are those that somebody holds. A file goes before the entry does: when the daemon is
// killed in between, the next one finds an entry without a file and drops it.
void CacheIndex::evict() {
  constexpr std::size_t kMostLooks = 1000;  // all, in most caches; some 0.5 ms
  if (isOverLimit()) forgetMissing(kMostLooks);
  while (isOverLimit() && !idle_.empty()) {
    Slot& oldest = *idle_.begin()->second;
    const Entry entry = oldest.entry;
    retire(oldest);
    store_.saveRemoval(entry);
  }
}

}  // namespace vxcached
