#include "tools/vxcached/Daemon.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <system_error>
#include <utility>

#include <vx/Filename.h>
#include <vx/Process.h>
#include <vx/SysInfo.h>

#include "tools/vxcached/OwnFiles.h"

namespace vxcached {

using vxKilnBase::FileCacheProtocolClient;
using vxString::CString;
using vxTCP::Address;
using vxTCP::Server;
using vxTCP::Socket;
using vxUtil::Error;
using vxUtil::Interval;

namespace {

constexpr int kErrorCode = 1;
const Interval kTick(0.25);
const Interval kLastLook(0.1);
const Interval kNoTime(0.001);  // 0 stands for no limit
constexpr int kMostWaiting = 128;
constexpr std::chrono::seconds kOpeningTime(5);
constexpr std::chrono::milliseconds kPause(20);
constexpr std::chrono::hours kClearingPause(1);
constexpr std::size_t kMostPortBytes = 16;

// What is left until the end, but not nothing, which stands for no limit.
Interval restUntil(Daemon::Clock::time_point end) {
  const std::chrono::duration<double> rest = end - Daemon::Clock::now();
  return Interval(std::max(rest.count(), 0.001));
}

Error connectTo(int port, Daemon::Clock::time_point end, std::unique_ptr<Socket>& socket) {
  auto made = std::make_unique<Socket>(Address::localhost(port));
  if (Error error = made->connect(restUntil(end))) return error;
  if (!made->peerIsSameUser())
    return {kErrorCode, "the other end is gone, or belongs to another user"};
  socket = std::move(made);
  return {};
}

// Passes on to the daemon behind the socket. The result is false when that connection fails.
bool passOn(std::unique_ptr<Socket> socket, const Opening& opening, Daemon::Clock::time_point end,
            std::unique_ptr<Service>& service, Error& error) {
  try {
    auto remote = std::make_unique<RemoteService>(std::move(socket));
    remote->setLimit(restUntil(end));
    error = remote->initialize(opening.directory, opening.n, opening.m);
    remote->setLimit(Interval(FileCacheProtocolClient::kLimitSeconds));
    if (!error) service = std::move(remote);
    return true;
  } catch (const Error& failure) {
    error = failure;
    return false;
  }
}

// Starts a process for a directory, which finds out whether it serves the directory itself.
Error startOther(const Opening& opening, std::unique_ptr<Service>& service) {
  const auto end = Daemon::Clock::now() + kOpeningTime;
  Server server(Server::kAnyPort, 1);
  server.setLoopbackOnly();
  if (Error error = server.listen()) return error;
  const CString port = CString::format("%d", server.getPort());
  const vx::vector<CString> command = {APP_getBinaryPath("vxcached"), "--port", port};
  auto& processes = vxOS::ProcessManager::getInstance();
  if (Error error = processes.startAsync(command, vxOS::Filename())) return error;
  std::unique_ptr<Socket> socket;
  if (Error error = server.accept(socket, restUntil(end))) return error;
  if (!socket || !socket->peerIsSameUser())
    return {kErrorCode, "cannot start a daemon for this folder"};
  Error error;
  passOn(std::move(socket), opening, end, service, error);
  return error;
}

}  // namespace

Daemon::~Daemon() {
  for (Thread& each : sessions_) each.session.interrupt();
  for (Thread& each : sessions_) each.thread.join();
}

Error Daemon::start(int port) {
  server_ = std::make_unique<Server>(Server::kAnyPort, kMostWaiting);
  server_->setLoopbackOnly();
  if (Error error = server_->listen()) return error;
  port_ = server_->getPort();
  std::unique_ptr<Socket> socket;
  if (Error error = connectTo(port, Clock::now() + kOpeningTime, socket)) return error;
  addSession(std::move(socket), true);
  return {};
}

void Daemon::run() {
  do {
    acceptClients(kTick);
    dropFinishedSessions();
    keepDirectory();
  } while (!mustEnd() && !(isIdle() && mayEnd()));
  log_.write(mustEnd() ? "ends as it is told" : "ends without clients");
  turnAway();
}

// Serves all who wait, the first of them for as long as `limit`. Processes of other users get no
// thread and keep the daemon from nothing.
void Daemon::acceptClients(Interval limit) {
  for (int i = 0; i < kMostWaiting; ++i) {
    std::unique_ptr<Socket> socket;
    if (server_->accept(socket, i == 0 ? limit : kNoTime)) std::this_thread::sleep_for(kPause);
    if (!socket) return;
    if (socket->peerIsSameUser())
      addSession(std::move(socket), false);
    else
      log_.writeOnce("refuses a process of another user");
  }
}

// Clients that come from now on find no daemon and start one, which waits for the lock.
void Daemon::turnAway() {
  if (Cache* cache = openCache_) {
    cache->retire();
    control_->end();
  }
  server_.reset();
}

Error Daemon::open(const Opening& opening, bool isStarter, std::unique_ptr<Service>& service) {
  constexpr std::size_t kMostPathBytes = 32768;  // no system has longer ones
  if (opening.directory.length() > kMostPathBytes)
    return {kErrorCode, "the name of the folder is too long"};
  std::unique_lock guard(opening_);
  if (cache_ == nullptr) {
    return isStarter ? openFirst(opening, service)
                     : Error(kErrorCode, "this daemon serves no folder");
  }
  guard.unlock();
  if (cache_->isAt(opening.directory)) {
    service = std::make_unique<LocalService>(*cache_, opening.directory);
    return service->initialize(opening.directory, opening.n, opening.m);
  }
  if (!vxOS::Filename(opening.directory).isAbsolute())
    return {kErrorCode, "\"" + opening.directory +
                            "\" is not the folder of this daemon; give the complete path"};
  return startOther(opening, service);
}

// Takes the directory, or finds the daemon that has it. That one may be about to start or to end.
Error Daemon::openFirst(const Opening& opening, std::unique_ptr<Service>& service) {
  const auto end = Clock::now() + kOpeningTime;
  Error error;
  while (!tryFirst(opening, end, service, error)) {
    if (mustEnd() || Clock::now() >= end)
      return {kErrorCode, "the daemon of \"" + opening.directory + "\" does not answer"};
    std::this_thread::sleep_for(kPause);
  }
  return error;
}

// False when a later attempt may have another result.
bool Daemon::tryFirst(const Opening& opening, Clock::time_point end,
                      std::unique_ptr<Service>& service, Error& error) {
  auto cache = std::make_unique<Cache>(log_);
  bool isTaken = false;
  error = cache->lock(opening.directory, isTaken);
  if (error) return true;
  if (isTaken) {
    std::unique_ptr<Socket> socket;
    const int port = std::atoi(cache->directory().read(kDaemonLockName, kMostPortBytes).c_str());
    error = connectTo(port, end, socket);
    return !error && passOn(std::move(socket), opening, end, service, error);
  }
  error = cache->open(port_);
  if (error) return true;
  cache_ = std::move(cache);
  control_ = std::make_unique<Control>(*cache_, log_, [this] { isStopped_ = true; });
  openCache_ = cache_.get();
  log_.write("serves \"" + opening.directory + "\"");
  service = std::make_unique<LocalService>(*cache_, opening.directory);
  error = service->initialize(opening.directory, opening.n, opening.m);
  return true;
}

void Daemon::addSession(std::unique_ptr<Socket> socket, bool isStarter) {
  std::list<Thread> made;
  Thread& added = made.emplace_back(*this, log_, std::move(socket), isStarter);
  try {
    added.thread = std::thread([&added] { added.session.run(); });
    sessions_.splice(sessions_.end(), made);
  } catch (const std::system_error& error) {
    log_.write(CString("cannot serve a client: ") + error.what());
  }
}

void Daemon::dropFinishedSessions() {
  if (sessions_.empty()) return;
  sessions_.remove_if([](Thread& each) {
    if (!each.session.isDone()) return false;
    each.thread.join();
    return true;
  });
  lastClient_ = Clock::now();
}

void Daemon::keepDirectory() {
  Cache* cache = openCache_;
  if (cache == nullptr) return;
  if (!cache->hasLock()) {
    log_.write("the locked file is gone");
    isStopped_ = true;
    return;
  }
  cache->keepPortFile();
  cache->saveRest();
  if (Clock::now() < nextClearing_) return;
  cache->clearAway(static_cast<std::int64_t>(std::time(nullptr)));
  nextClearing_ = Clock::now() + kClearingPause;
}

// Without a directory there is nothing to wait for, also when somebody has deleted the directory.
bool Daemon::isIdle() const {
  const Cache* cache = openCache_;
  return sessions_.empty() && (cache == nullptr || Clock::now() - lastClient_ >= idleTime_ ||
                               !cache->isAt(cache->directory().path()));
}

// A client that has read the port before the file went is still served.
bool Daemon::mayEnd() {
  Cache* cache = openCache_;
  if (cache == nullptr) return true;
  cache->removePortFile();
  acceptClients(kLastLook);
  return sessions_.empty();
}

}  // namespace vxcached
