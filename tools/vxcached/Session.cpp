#include "tools/vxcached/Session.h"

#include <exception>

#include "tools/vxcached/Daemon.h"

namespace vxcached {

using vxString::CString;
using vxUtil::Error;
using vxUtil::Interval;

namespace {

const Interval kRequestLimit(60.0);

}  // namespace

Session::Session(Daemon& daemon, Log& log, std::unique_ptr<vxTCP::Socket> socket, bool isStarter)
    : daemon_(daemon), log_(log), socket_(std::move(socket)), isStarter_(isStarter) {}

Session::~Session() = default;

void Session::interrupt() noexcept {
  socket_->interrupt();
  const std::lock_guard guard(serviceMutex_);
  if (service_) service_->interrupt();
}

void Session::run() noexcept {
  try {
    serve();
  } catch (const Error& error) {
    log_.write("a client is gone: " + error.message());
  } catch (const std::exception& error) {
    log_.write(CString("a client is dropped: ") + error.what());
  }
  {
    const std::lock_guard guard(serviceMutex_);
    service_.reset();
  }
  interrupt();
  isDone_ = true;
}

void Session::serve() {
  setSocket(*socket_);
  while (socket_->waitForInput()) {
    socket_->limitExchange(kRequestLimit);
    readRequest();
  }
}

Error Session::initialize(const CString& directory, int n, std::int64_t m) {
  if (service_) return service_->initialize(directory, n, m);
  std::unique_ptr<Service> found;
  const Error error = daemon_.open({directory, n, m}, isStarter_, found);
  {
    const std::lock_guard guard(serviceMutex_);
    service_ = std::move(found);
  }
  log_.write("a client opens \"" + directory +
             "\": " + (error ? error.message() : CString("welcome")));
  return error;
}

bool Session::acquire(const CString& key, CString& path, std::int64_t& accessTime) {
  return service_ && service_->acquire(key, path, accessTime);
}

bool Session::add(const CString& key, const CString& path) {
  return service_ && service_->add(key, path);
}

bool Session::release(const CString& key, bool remove) {
  return service_ && service_->release(key, remove);
}

void Session::setAccessed(const CString& key) {
  if (service_) service_->setAccessed(key);
}

}  // namespace vxcached
