#include "tools/vxcached/Cache.h"

#include <algorithm>
#include <chrono>
#include <ctime>

#include <kilnbase/net/FileCacheProtocol.h>
#include <vx/Filename.h>

#include "tools/vxcached/Listing.h"
#include "tools/vxcached/OwnFiles.h"

namespace vxcached {

using vxKilnBase::FileCacheProtocol;
using vxOS::Directory;
using vxOS::FileFacts;
using vxString::CString;
using vxUtil::Error;

namespace {

constexpr std::int64_t kDaySeconds = 86400;
constexpr std::int64_t kNanoseconds = 1'000'000'000;
constexpr std::size_t kMostPortBytes = 127;

std::int64_t now() {
  return static_cast<std::int64_t>(std::time(nullptr));
}

// Whether the name is one as vxOS::Uuid writes them.
bool isUuid(std::string_view name) {
  constexpr std::string_view kPattern = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
  const auto matches = [](char pattern, char c) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    return pattern == '-' ? c == '-' : kDigits.find(c) != std::string_view::npos;
  };
  return std::ranges::equal(kPattern, name, matches);
}

}  // namespace

SplitPath::SplitPath(std::string_view path) {
  constexpr std::string_view kSeparators = "/\\";
  const std::size_t start = path.find_last_of(kSeparators) + 1;
  const std::string_view above = path.substr(0, start);
  const std::string_view trimmed = above.substr(0, above.find_last_not_of(kSeparators) + 1);
  folder = CString(trimmed.empty() ? above : trimmed);
  name = CString(path.substr(start));
}

Cache::~Cache() {
  if (port_ == 0) return;
  removePortFile();
  const std::lock_guard guard(mutex_);
  if (!hasLock()) return;
  if (Error error = journal_.rewrite(index_.list())) log_.writeOnce(error.message());
  lock_.truncate(0);
}

Error Cache::lock(const CString& path, bool& isTaken) {
  isTaken = false;
  if (Error error = Directory::make(path)) return error;
  if (Error error = directory_.open(path)) return error;
  if (Error error = requirePrivate()) return error;
  if (Error error = lock_.open(directory_, kDaemonLockName)) return error;
  return lock_.tryLock(directory_, isTaken);
}

Error Cache::open(int port) {
  if (!lock_.truncate(0) || !lock_.append(CString::format("%d\n", port).view()))
    return {1, "cannot write \"" + CString(kDaemonLockName) + "\" in the folder \"" +
                   directory_.path() + "\""};
  {
    const std::lock_guard guard(mutex_);
    if (Error error = journal_.open(directory_, index_)) {
      lock_.truncate(0);
      return error;
    }
    port_ = port;
    const auto start = std::chrono::system_clock::now().time_since_epoch();
    start_ = std::chrono::duration_cast<std::chrono::nanoseconds>(start).count();
  }
  keepPortFile();
  return {};
}

void Cache::setLimits(const Limits& limits) {
  const std::lock_guard guard(mutex_);
  index_.setLimits(limits);
}

bool Cache::acquire(Client& client, std::string_view key, const CString& start, CString& path,
                    std::int64_t& accessTime) {
  const std::lock_guard guard(mutex_);
  const Entry* entry = index_.acquire(client, key);
  if (entry == nullptr) return false;
  path = start + CString(std::string_view(entry->name));
  accessTime = entry->accessTime;
  return true;
}

bool Cache::add(Client& client, std::string_view key, const CString& name) {
  if (!isEntryName(name.view())) return false;
  const std::lock_guard guard(mutex_);
  const bool isAdded = index_.add(client, std::string(key), std::string(name.view()), now());
  rewriteWhenWorth();
  return isAdded;
}

bool Cache::release(Client& client, std::string_view key, bool remove) {
  const std::lock_guard guard(mutex_);
  return index_.release(client, key, remove);
}

void Cache::setAccessed(std::string_view key) {
  const std::lock_guard guard(mutex_);
  index_.setAccessed(key, now());
  rewriteWhenWorth();
}

void Cache::releaseAll(Client& client) {
  const std::lock_guard guard(mutex_);
  index_.releaseAll(client);
}

std::string Cache::portText() const {
  return std::to_string(port_) + "\n";
}

// A client that finds no daemon at the port of an older file deletes the file by its name, and may
// meet this daemon's.
void Cache::keepPortFile() {
  const std::lock_guard guard(mutex_);
  const CString name = FileCacheProtocol::LockFileName;
  if (port_ == 0 || isRetired_ || directory_.read(name, kMostPortBytes).view() == portText())
    return;
  if (Error error = directory_.replace(name, portText())) log_.writeOnce(error.message());
}

void Cache::retire() {
  {
    const std::lock_guard guard(mutex_);
    isRetired_ = true;
  }
  removePortFile();
}

void Cache::removePortFile() {
  const std::lock_guard guard(mutex_);
  const CString name = FileCacheProtocol::LockFileName;
  if (directory_.read(name, kMostPortBytes).view() == portText()) directory_.remove(name);
}

void Cache::clearAway(std::int64_t now) {
  const std::int64_t before = (now - kDaySeconds) * kNanoseconds;
  for (const CString& name : directory_.names()) {
    if (isUuid(name.view()) || Directory::isTemporary(name.view())) clearAway(name, before);
  }
}

void Cache::clearAway(const CString& name, std::int64_t before) {
  const std::lock_guard guard(mutex_);
  const FileFacts facts = directory_.query(name);
  if (!facts.isOwnFile || index_.owns(facts) || facts.modified > before) return;
  if (directory_.lastChange(name) > std::max(before, start_)) return;
  log_.write("clears away " + name);
  directory_.remove(name);
}

std::string Cache::listing() {
  const std::lock_guard guard(mutex_);
  index_.forgetMissing(index_.size());
  return vxcached::listing(index_.list(), index_.limits(), now());
}

FileFacts Cache::query(const std::string& name) {
  return directory_.query(CString(std::string_view(name)));
}

void Cache::remove(const std::string& name) {
  if (!hasLock()) return;
  log_.write("deletes " + CString(std::string_view(name)));
  directory_.remove(CString(std::string_view(name)));
}

bool Cache::saveEntry(const Entry& entry) {
  return hasLock() && journal_.appendEntry(entry);
}

void Cache::saveAccess(const Entry& entry) {
  if (hasLock()) journal_.appendAccess(entry);
}

void Cache::saveRest() {
  const std::lock_guard guard(mutex_);
  if (hasLock()) journal_.appendRest();
}

void Cache::saveRemoval(const Entry& entry) {
  if (hasLock()) journal_.appendRemoval(entry);
}

void Cache::rewriteWhenWorth() {
  if (!journal_.isWorthRewriting(index_.size()) || !hasLock()) return;
  if (Error error = journal_.rewrite(index_.list())) log_.writeOnce(error.message());
}

}  // namespace vxcached
