#include "tools/vxcached/Services.h"

#include <filesystem>
#include <utility>

#include <vx/Filename.h>

namespace vxcached {

using vxOS::Filename;
using vxString::CString;
using vxUtil::Error;

namespace {

CString completePath(const CString& path) {
  if (Filename(path).isAbsolute()) return path;
  const std::u8string folder = std::filesystem::current_path().u8string();
  return Filename::join(CString(reinterpret_cast<const char*>(folder.c_str())), path);
}

// The folder of a file whose path a client makes from the name of its directory.
CString folderOf(const CString& directory) {
  return SplitPath(Filename::join(directory, "x").view()).folder;
}

}  // namespace

Error LocalService::initialize(const CString& directory, int n, std::int64_t m) {
  if (!cache_.isAt(directory)) return {1, "the connection is for another folder already"};
  if (Error error = cache_.requirePrivate()) return error;
  directory_ = directory;
  const CString example = Filename::join(directory, "x");
  start_ = example.substring(0, example.length() - 1);
  cache_.setLimits({n, m});
  cache_.keepPortFile();
  return {};
}

bool LocalService::acquire(const CString& key, CString& path, std::int64_t& accessTime) {
  return cache_.acquire(client_, key.view(), start_, path, accessTime);
}

// A relative path may mean another folder to the client than to the daemon.
bool LocalService::isHere(const CString& folder) const {
  return folder == folderOf(directory_) || (Filename(folder).isAbsolute() && cache_.isAt(folder));
}

bool LocalService::add(const CString& key, const CString& path) {
  const SplitPath split(path.view());
  return isHere(split.folder) && cache_.add(client_, key.view(), split.name);
}

bool LocalService::release(const CString& key, bool remove) {
  return cache_.release(client_, key.view(), remove);
}

void LocalService::setAccessed(const CString& key) {
  cache_.setAccessed(key.view());
}

RemoteService::RemoteService(std::unique_ptr<vxTCP::Socket> socket) : socket_(std::move(socket)) {
  client_.setSocket(*socket_);
}

// A connection that has failed tells so when it is flushed.
Error RemoteService::initialize(const CString& directory, int n, std::int64_t m) {
  const CString complete = completePath(directory);
  Error error = client_.initialize(complete, n, m);
  socket_->flush();
  if (error) return error;
  directory_ = directory;
  complete_ = complete;
  return {};
}

bool RemoteService::acquire(const CString& key, CString& path, std::int64_t& accessTime) {
  const bool isFound = client_.acquire(key, path, accessTime);
  socket_->flush();
  if (isFound) path = Filename::join(directory_, SplitPath(path.view()).name);
  return isFound;
}

bool RemoteService::add(const CString& key, const CString& path) {
  const SplitPath split(path.view());
  const bool isOurs = split.folder == folderOf(directory_);
  const bool isAdded = client_.add(key, isOurs ? Filename::join(complete_, split.name) : path);
  socket_->flush();
  return isAdded;
}

bool RemoteService::release(const CString& key, bool remove) {
  const bool isReleased = client_.release(key, remove);
  socket_->flush();
  return isReleased;
}

void RemoteService::setAccessed(const CString& key) {
  client_.setAccessed(key);
  socket_->flush();
}

}  // namespace vxcached
