#include "tools/vxcached/Control.h"

#include <chrono>
#include <cstdlib>
#include <utility>

#include "tools/vxcached/OwnFiles.h"

namespace vxcached {

using vxOS::Directory;
using vxOS::LocalChannel;
using vxString::CString;
using vxUtil::Error;

namespace {

constexpr const char* kList = "list";
constexpr const char* kStop = "stop";
constexpr int kErrorCode = 1;
constexpr int kTickMilliseconds = 250;
constexpr std::chrono::seconds kEndingTime(10);
constexpr std::chrono::milliseconds kPause(20);

Error ask(const Directory& directory, const CString& question, CString& answer) {
  if (Error error = LocalChannel::ask(directory, kChannelName, question, answer))
    return {kErrorCode, "no daemon of \"" + directory.path() + "\" answers: " + error.message()};
  return {};
}

// The port of the daemon that has the lock; 0 when there is none.
int portIn(const Directory& directory) {
  constexpr std::size_t kMostBytes = 16;
  return std::atoi(directory.read(kDaemonLockName, kMostBytes).c_str());
}

}  // namespace

Control::Control(Cache& cache, Log& log, std::function<void()> stop)
    : cache_(cache), stop_(std::move(stop)) {
  if (Error error = channel_.listen(cache.directory(), kChannelName)) {
    log.write(error.message());
    return;
  }
  thread_ = std::thread([this] {
    while (!isEnding_)
      channel_.serve(kTickMilliseconds,
                     [this](const CString& question) { return answer(question); });
  });
}

void Control::end() noexcept {
  isEnding_ = true;
  channel_.interrupt();
}

Control::~Control() {
  end();
  if (thread_.joinable()) thread_.join();
}

CString Control::answer(const CString& question) {
  if (question == kList) return CString(std::string_view(cache_.listing()));
  if (question == kStop) stop_();
  return {};
}

Error listCache(const CString& path, CString& text) {
  Directory directory;
  if (Error error = directory.open(path)) return error;
  return ask(directory, kList, text);
}

// The daemon has ended when its lock is free or another daemon has the lock.
Error stopDaemon(const CString& path) {
  Directory directory;
  if (Error error = directory.open(path)) return error;
  const int port = portIn(directory);
  CString answer;
  if (Error error = ask(directory, kStop, answer)) return error;
  const auto end = std::chrono::steady_clock::now() + kEndingTime;
  for (;;) {
    vxOS::DirectoryFile lock;
    bool isTaken = false;
    if (Error error = lock.open(directory, kDaemonLockName)) return error;
    if (Error error = lock.tryLock(directory, isTaken)) return error;
    const int now = portIn(directory);
    if (!isTaken || (now != 0 && now != port)) return {};
    if (std::chrono::steady_clock::now() >= end)
      return {kErrorCode, "the daemon of \"" + path + "\" does not end"};
    std::this_thread::sleep_for(kPause);
  }
}

}  // namespace vxcached
