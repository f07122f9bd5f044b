#include "tools/vxcached/Control.h"

#include <chrono>
#include <utility>

namespace vxcached {

using vxOS::Directory;
using vxOS::LocalChannel;
using vxString::CString;
using vxUtil::Error;

namespace {

constexpr const char* kChannelName = "@daemon.sock";
constexpr const char* kList = "list";
constexpr const char* kStop = "stop";
constexpr int kErrorCode = 1;
constexpr int kTickMilliseconds = 250;
constexpr std::chrono::seconds kEndingTime(10);
constexpr std::chrono::milliseconds kPause(20);

Error ask(const CString& path, const CString& question, Directory& directory, CString& answer) {
  if (Error error = directory.open(path)) return error;
  if (Error error = LocalChannel::ask(directory, kChannelName, question, answer))
    return {kErrorCode, "no daemon of \"" + path + "\" answers: " + error.message()};
  return {};
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

Control::~Control() {
  isEnding_ = true;
  if (thread_.joinable()) thread_.join();
}

CString Control::answer(const CString& question) {
  if (question == kList) return CString(std::string_view(cache_.listing()));
  if (question == kStop) stop_();
  return {};
}

Error listCache(const CString& path, CString& text) {
  Directory directory;
  return ask(path, kList, directory, text);
}

// The daemon has ended when its lock is free.
Error stopDaemon(const CString& path) {
  Directory directory;
  CString answer;
  if (Error error = ask(path, kStop, directory, answer)) return error;
  vxOS::DirectoryFile lock;
  if (Error error = lock.open(directory, kDaemonLockName)) return error;
  const auto end = std::chrono::steady_clock::now() + kEndingTime;
  while (!lock.tryLock(directory)) {
    if (std::chrono::steady_clock::now() >= end)
      return {kErrorCode, "the daemon of \"" + path + "\" does not end"};
    std::this_thread::sleep_for(kPause);
  }
  return {};
}

}  // namespace vxcached
