// The file cache with its daemon. What has a limit in time, not a peer, is measured beside a loop
// that takes just that long.

#include <arpa/inet.h>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <netinet/tcp.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <kilnbase/net/FileCache.h>
#include <kilnbase/net/FileCacheProtocol.h>
#include <vx/Process.h>
#include <vx/SysInfo.h>

#include "families/Families.h"

namespace bench {

namespace {

namespace fs = std::filesystem;
using vxKilnBase::FileCache;
using vxString::CString;
using Clock = std::chrono::steady_clock;

constexpr int kHeldKeys = 1000;

CString keyOf(int number) {
  return CString::format("surface-%028d", number);  // 36 bytes
}

void require(const vxUtil::Error& error) {
  if (error) throw std::runtime_error(error.message().c_str());
}

// A directory with entries, which are made once for all passes. The daemon is started by whoever
// opens the cache.
class CacheFolder {
 public:
  explicit CacheFolder(int entries) {
    std::string name = (fs::temp_directory_path() / "kiln_bench-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = name;
    FileCache cache;
    open(cache);
    for (int i = 0; i < entries; ++i) {
      const CString file = cache.generatePath();
      std::ofstream(file.c_str()) << i;
      if (!cache.add(keyOf(i), file)) throw std::runtime_error("cannot fill the cache");
    }
  }
  ~CacheFolder() {
    stop();
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  CacheFolder(const CacheFolder&) = delete;
  CacheFolder& operator=(const CacheFolder&) = delete;

  CString path() const { return path_.c_str(); }
  void open(FileCache& cache) const { require(cache.initialize(path(), 0, 0)); }
  void stop() const {
    vxOS::ProcessManager::getInstance().startSync({program_, "--stop", path_.c_str()});
  }
  int port() const {
    int port = 0;
    std::ifstream(path_ / vxKilnBase::FileCacheProtocol::LockFileName) >> port;
    return port;
  }

  static CacheFolder& of(int entries) {
    static std::map<int, CacheFolder> folders;
    return folders.try_emplace(entries, entries).first->second;
  }

 private:
  fs::path path_;
  // Known beforehand: at the end of the program the library may not know the folder any more.
  CString program_ = APP_getBinaryPath("vxcached");
};

// Keeps this process, and those that it starts, on the processor where it is.
class OnOneCpu {
 public:
  OnOneCpu() {
    sched_getaffinity(0, sizeof before_, &before_);
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(sched_getcpu(), &one);
    sched_setaffinity(0, sizeof one, &one);
  }
  ~OnOneCpu() { sched_setaffinity(0, sizeof before_, &before_); }
  OnOneCpu(const OnOneCpu&) = delete;
  OnOneCpu& operator=(const OnOneCpu&) = delete;

  static std::shared_ptr<OnOneCpu> shared() {
    static std::weak_ptr<OnOneCpu> known;
    auto current = known.lock();
    if (!current) known = current = std::make_shared<OnOneCpu>();
    return current;
  }

 private:
  cpu_set_t before_;
};

// Asks the daemon for one entry, again and again.
class Acquiring {
 public:
  Acquiring() : cpu_(OnOneCpu::shared()) {
    CacheFolder& folder = CacheFolder::of(kHeldKeys);
    folder.stop();
    folder.open(starter_);
    socket_ = std::make_unique<vxTCP::Socket>(vxTCP::Address::localhost(folder.port()));
    require(socket_->connect());
    client_.setSocket(*socket_);
    require(client_.initialize(folder.path(), 0, 0));
  }
  bool operator()() { return client_.acquire(key_, path_, accessTime_); }
  std::size_t requestBytes() const { return 4 + 4 + key_.length(); }
  std::size_t answerBytes() const { return 4 + path_.length() + 8 + 4; }

 private:
  std::shared_ptr<OnOneCpu> cpu_;
  FileCache starter_;
  std::unique_ptr<vxTCP::Socket> socket_;
  vxKilnBase::FileCacheProtocolClient client_;
  CString key_ = keyOf(7), path_;
  std::int64_t accessTime_ = 0;
};

bool sendAll(int socket, std::vector<char>& bytes) {
  return send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
         static_cast<ssize_t>(bytes.size());
}

bool receiveAll(int socket, std::vector<char>& bytes) {
  return recv(socket, bytes.data(), bytes.size(), MSG_WAITALL) ==
         static_cast<ssize_t>(bytes.size());
}

// Sends as many bytes as a request has to another process, which sends as many back as an answer
// has: nothing but the system's calls that this takes.
class PingPong {
 public:
  PingPong(std::size_t requestBytes, std::size_t answerBytes)
      : cpu_(OnOneCpu::shared()), request_(requestBytes), answer_(answerBytes) {
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* any = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener, any, size) != 0 || listen(listener, 1) != 0 ||
        getsockname(listener, any, &size) != 0)
      throw std::runtime_error("cannot listen");
    child_ = fork();
    if (child_ == 0) answer(accept(listener, nullptr, nullptr));
    close(listener);
    socket_ = socket(AF_INET, SOCK_STREAM, 0);
    if (connect(socket_, any, size) != 0) throw std::runtime_error("cannot connect");
    sendAtOnce(socket_);
  }
  ~PingPong() {
    shutdown(socket_, SHUT_RDWR);  // also for a younger child, which has a copy
    close(socket_);
    waitpid(child_, nullptr, 0);
  }
  PingPong(const PingPong&) = delete;
  PingPong& operator=(const PingPong&) = delete;

  bool operator()() { return sendAll(socket_, request_) && receiveAll(socket_, answer_); }

 private:
  static void sendAtOnce(int socket) {
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  }
  [[noreturn]] void answer(int socket) {
    sendAtOnce(socket);
    while (receiveAll(socket, request_) && sendAll(socket, answer_)) {
    }
    _exit(0);
  }

  std::shared_ptr<OnOneCpu> cpu_;
  std::vector<char> request_, answer_;
  int socket_ = -1;
  pid_t child_ = -1;
};

std::shared_ptr<Acquiring> sharedAcquiring() {
  static std::weak_ptr<Acquiring> known;
  auto current = known.lock();
  if (!current) known = current = std::make_shared<Acquiring>();
  return current;
}

Contestant acquiring(const Shape&) {
  const auto shared = sharedAcquiring();
  return contestant([shared] { return (*shared)(); },
                    [](bool isFound) { return Values{isFound ? 1.0 : 0.0}; });
}

Contestant pingPong(const Shape&) {
  const auto model = sharedAcquiring();
  (*model)();
  const auto shared = std::make_shared<PingPong>(model->requestBytes(), model->answerBytes());
  return contestant([shared] { return (*shared)(); },
                    [](bool isDone) { return Values{isDone ? 1.0 : 0.0}; });
}

// Takes `seconds`; the result is that of the operation that must not take longer.
Maker taking(double seconds, double result) {
  return [seconds, result](const Shape&) {
    const auto run = [seconds, result] {
      const auto end = Clock::now() + std::chrono::duration<double>(seconds);
      while (Clock::now() < end) {
      }
      return result;
    };
    return contestant(run, [](double value) { return Values{value}; });
  };
}

// Finds all keys, whose items the application holds.
class Finding {
 public:
  Finding() {
    CacheFolder::of(kHeldKeys).open(cache_);
    for (int i = 0; i < kHeldKeys; ++i) {
      keys_.push_back(keyOf(i));
      items_.push_back(cache_.find(keys_.back()));
    }
  }
  double operator()() {
    double found = 0.0;
    for (const CString& key : keys_) found += cache_.find(key) ? 1.0 : 0.0;
    return found;
  }

 private:
  FileCache cache_;
  std::vector<CString> keys_;
  std::vector<vx::Reference<vxKilnBase::FileCacheItem>> items_;
};

Contestant finding(const Shape&) {
  const auto shared = std::make_shared<Finding>();
  return contestant([shared] { return (*shared)(); }, [](double found) { return Values{found}; });
}

double startAndFind(const CacheFolder& folder) {
  FileCache cache;
  folder.open(cache);
  return cache.find(keyOf(7)) ? 1.0 : 0.0;
}

// The daemon's end is not timed.
Contestant starting(const Shape& shape) {
  const CacheFolder& folder = CacheFolder::of(shape.rows);
  const auto loop = [&folder](benchmark::State& state) {
    for (auto _ : state) {
      state.PauseTiming();
      folder.stop();
      state.ResumeTiming();
      benchmark::DoNotOptimize(startAndFind(folder));
    }
  };
  return {loop, [&folder] {
            folder.stop();
            return Values{startAndFind(folder)};
          }};
}

Limits within(double ratio) {
  return {ratio, ratio};
}

}  // namespace

void addCache(Suite& suite) {
  suite.add({"cache, acquire",
             {{1, 1}},
             {"ping-pong"},
             [](const Shape&) { return within(1.25); },
             acquiring,
             {{"ping-pong", pingPong}}});
  suite.add({"cache, find held keys",
             {{kHeldKeys, 1}},
             {"150 ns each"},
             [](const Shape&) { return within(1.0); },
             finding,
             {{"150 ns each", taking(150e-9 * kHeldKeys, kHeldKeys)}}});
  suite.add({"cache, start of the daemon",
             {{1000, 1}},
             {"100 ms"},
             [](const Shape&) { return within(1.0); },
             starting,
             {{"100 ms", taking(0.1, 1.0)}}});
  suite.add({"cache, start of a large one",
             {{100000, 1}},
             {"2 s"},
             [](const Shape&) { return within(1.0); },
             starting,
             {{"2 s", taking(2.0, 1.0)}}});
}

}  // namespace bench
