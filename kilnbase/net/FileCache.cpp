#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <map>
#include <memory>
#include <memory_resource>
#include <optional>
#include <utility>

#include <kilnbase/net/FileCache.h>
#include <kilnbase/net/FileCacheProtocol.h>
#include <vx/Directory.h>
#include <vx/File.h>
#include <vx/Filename.h>
#include <vx/Process.h>
#include <vx/Signal.h>
#include <vx/SysInfo.h>
#include <vx/Tcp.h>
#include <vx/Uuid.h>

namespace vxKilnBase {

using vxString::CString;
using vxTCP::Address;
using vxTCP::Server;
using vxTCP::Socket;
using vxUtil::Error;
using vxUtil::Interval;

FileCacheItem::~FileCacheItem() = default;

namespace {

constexpr int kErrorCode = 1;
constexpr std::size_t kMostLockFileBytes = 127;
constexpr double kConnectSeconds = 5.0;
constexpr double kStartSeconds = 5.0;
constexpr const char* kManualStart = "MORLA_FILE_CACHE_MANUAL_START";

class ItemImpl final : public FileCacheItem {
 public:
  ItemImpl(CString key, CString path, std::int64_t accessTime)
      : key_(std::move(key)), path_(std::move(path)), accessTime_(accessTime) {}
  ~ItemImpl() override { destroyed.emit(this); }

  const CString& getKey() const override { return key_; }
  const CString& getPath() const override { return path_; }
  std::int64_t getAccessTime() const override { return accessTime_; }

  void setAccessTime(std::int64_t time) { accessTime_ = time; }
  bool isRemoved() const { return isRemoved_; }
  void setRemoved() { isRemoved_ = true; }

  vxRTB::SignalBase<const ItemImpl*> destroyed;

 private:
  CString key_;
  CString path_;
  std::int64_t accessTime_;
  bool isRemoved_ = false;
};

std::int64_t now() {
  return static_cast<std::int64_t>(std::time(nullptr));
}

Error lockFileError(const char* what, const CString& path) {
  return {kErrorCode, CString::format("Cannot %s lockfile: %s", what, path.c_str())};
}

// What is no regular file, as a pipe without a writer, is not waited for.
Error readPort(const CString& directory, const CString& lockPath, int& port) {
  vxOS::Directory folder;
  CString text;
  if (folder.open(directory) ||
      folder.read(FileCacheProtocol::LockFileName, kMostLockFileBytes, text))
    return lockFileError("open", lockPath);
  if (text.isEmpty()) return lockFileError("read", lockPath);
  port = std::atoi(text.c_str());
  return {};
}

Error connectThrough(const CString& directory, const CString& lockPath,
                     std::unique_ptr<Socket>& socket) {
  int port = 0;
  if (Error error = readPort(directory, lockPath, port)) return error;
  auto made = std::make_unique<Socket>(Address::localhost(port));
  if (Error error = made->connect(Interval(kConnectSeconds))) return error;
  if (!made->peerIsSameUser()) return {kErrorCode, "the cache server belongs to somebody else"};
  socket = std::move(made);
  return {};
}

Error startDaemon(const CString& port) {
  const vx::vector<CString> command = {APP_getBinaryPath("vxcached"), "--port", port};
  return vxOS::ProcessManager::getInstance().startAsync(command, vxOS::Filename());
}

// What is left of a limit; nothing when it has passed.
std::optional<Interval> restOf(Interval limit, std::chrono::steady_clock::time_point start) {
  if (limit.isUnlimited()) return limit;
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
  if (passed.count() >= limit.seconds()) return std::nullopt;
  return Interval(limit.seconds() - passed.count());
}

// Takes the first connection from a process of this user.
Error acceptDaemon(Server& server, Interval limit, std::unique_ptr<Socket>& socket) {
  const auto start = std::chrono::steady_clock::now();
  while (const auto rest = restOf(limit, start)) {
    if (Error error = server.accept(socket, *rest)) return error;
    if (!socket || socket->peerIsSameUser()) break;
    socket.reset();
  }
  return socket ? Error() : Error(kErrorCode, "could not connect to cache server");
}

Error startAndConnect(std::unique_ptr<Socket>& socket) {
  Server server(Server::kAnyPort, 1);
  server.setLoopbackOnly();
  if (Error error = server.listen()) return error;
  const CString port = CString::format("%d", server.getPort());
  if (std::getenv(kManualStart) != nullptr) {
    std::printf("Run: vxcached --port %s\n", port.c_str());
    std::fflush(stdout);
    return acceptDaemon(server, Interval(0.0), socket);
  }
  if (Error error = startDaemon(port)) return error;
  return acceptDaemon(server, Interval(kStartSeconds), socket);
}

}  // namespace

struct FileCache::CacheImpl {
  Error initialize(const CString& cacheDirectory, int n, std::int64_t m);
  Error connect();
  vx::Reference<FileCacheItem> hold(const CString& key, const CString& path,
                                    std::int64_t accessTime);
  void release(const ItemImpl& item);

  vxRTB::SignalClient signalClient;
  std::unique_ptr<Socket> socket;
  FileCacheProtocolClient client;
  CString directory;
  std::pmr::unsynchronized_pool_resource nodes;
  // The items that the application holds; an item lives as long as the application holds it.
  std::pmr::map<CString, ItemImpl*> items{&nodes};
};

struct FileCache::Handle : vx::ReferenceCount {
  std::unique_ptr<CacheImpl> cache = std::make_unique<CacheImpl>();
};

// Finds the daemon by the lock file. A lock file that leads to no daemon is what a dead one left.
Error FileCache::CacheImpl::connect() {
  const CString lockPath = vxOS::Filename::join(directory, FileCacheProtocol::LockFileName);
  vxOS::FileStatus lock;
  if (Error error = vxOS::File::query(lockPath, lock)) return error;
  if (lock.exists) {
    if (!connectThrough(directory, lockPath, socket)) return {};
    vxOS::File::remove(lockPath);
  }
  return startAndConnect(socket);
}

Error FileCache::CacheImpl::initialize(const CString& cacheDirectory, int n, std::int64_t m) {
  directory = cacheDirectory;
  Error error = connect();
  if (!error) {
    client.setSocket(*socket);
    error = client.initialize(directory, n, m);
  }
  if (error) {
    client = FileCacheProtocolClient();
    socket.reset();
  }
  return error;
}

vx::Reference<FileCacheItem> FileCache::CacheImpl::hold(const CString& key, const CString& path,
                                                        std::int64_t accessTime) {
  const vx::Reference<ItemImpl> item(new ItemImpl(key, path, accessTime));
  item->destroyed.connect(signalClient, [this](const ItemImpl* dying) { release(*dying); });
  items.insert_or_assign(key, item.get());
  return item;
}

// Kept as it is: the entry goes by its key alone, also when it belongs to a newer item.
void FileCache::CacheImpl::release(const ItemImpl& item) {
  items.erase(item.getKey());
  client.release(item.getKey(), item.isRemoved());
}

FileCache::FileCache() : handle_(new Handle), owns_(true) {}

FileCache::FileCache(const FileCache& other) : handle_(other.handle_), owns_(false) {}

// Both are handles on the cache afterwards.
FileCache::FileCache(FileCache&& other) noexcept : owns_(std::exchange(other.owns_, false)) {
  handle_ = other.handle_;
}

FileCache& FileCache::operator=(const FileCache& other) {
  if (handle_ == other.handle_) return *this;
  if (owns_) handle_->cache.reset();
  handle_ = other.handle_;
  owns_ = false;
  return *this;
}

FileCache& FileCache::operator=(FileCache&& other) noexcept {
  const bool becomesOwner = std::exchange(other.owns_, false);
  *this = std::as_const(other);
  owns_ = owns_ || becomesOwner;
  return *this;
}

FileCache::~FileCache() {
  if (owns_) handle_->cache.reset();
}

Error FileCache::initialize(const CString& directory, int n, std::int64_t m) {
  CacheImpl* cache = handle_->cache.get();
  return cache != nullptr ? cache->initialize(directory, n, m)
                          : Error(kErrorCode, "the cache has ended");
}

vx::Reference<FileCacheItem> FileCache::find(const CString& key) {
  CacheImpl* cache = handle_->cache.get();
  if (cache == nullptr) return nullptr;
  if (const auto held = cache->items.find(key); held != cache->items.end()) return held->second;
  CString path;
  std::int64_t accessTime = 0;
  const bool isFound = cache->client.acquire(key, path, accessTime);
  return isFound ? cache->hold(key, path, accessTime) : nullptr;
}

vx::Reference<FileCacheItem> FileCache::add(const CString& key, const CString& path) {
  CacheImpl* cache = handle_->cache.get();
  const bool isAccepted = cache != nullptr && cache->client.add(key, path);
  return isAccepted ? cache->hold(key, path, now()) : nullptr;
}

void FileCache::remove(vx::Reference<FileCacheItem> item) {
  if (auto* own = dynamic_cast<ItemImpl*>(item.get())) own->setRemoved();
  item = nullptr;
}

void FileCache::setAccessed(const vx::Reference<FileCacheItem>& item) {
  auto* own = dynamic_cast<ItemImpl*>(item.get());
  if (own == nullptr) return;
  own->setAccessTime(now());
  if (CacheImpl* cache = handle_->cache.get()) cache->client.setAccessed(own->getKey());
}

CString FileCache::generatePath() const {
  const CacheImpl* cache = handle_->cache.get();
  return vxOS::Filename::join(cache != nullptr ? cache->directory : CString(),
                              vxOS::Uuid::generate().asString());
}

}  // namespace vxKilnBase
