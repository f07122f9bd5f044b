// The connection of one client, served by a thread of its own.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include <kilnbase/net/FileCacheProtocol.h>
#include <vx/Tcp.h>

#include "tools/vxcached/Log.h"

namespace vxcached {

class Daemon;
class Service;

class Session : vxKilnBase::FileCacheProtocolServer {
 public:
  /// The other end belongs to this user. The client of a starter is the one that has started this
  /// process; others have found its port.
  Session(Daemon& daemon, Log& log, std::unique_ptr<vxTCP::Socket> socket, bool isStarter);
  ~Session() override;

  /// Serves the client until the connection ends, fails or is interrupted. A client may say nothing
  /// for as long as it likes between two requests.
  void run() noexcept;
  void interrupt() noexcept;
  bool isDone() const { return isDone_; }

 private:
  void serve();

  vxUtil::Error initialize(const vxString::CString& directory, int n, std::int64_t m) override;
  bool acquire(const vxString::CString& key, vxString::CString& path,
               std::int64_t& accessTime) override;
  bool add(const vxString::CString& key, const vxString::CString& path) override;
  bool release(const vxString::CString& key, bool remove) override;
  void setAccessed(const vxString::CString& key) override;

  Daemon& daemon_;
  Log& log_;
  std::unique_ptr<vxTCP::Socket> socket_;
  const bool isStarter_;
  std::mutex serviceMutex_;           // taken to set `service_` and to interrupt
  std::unique_ptr<Service> service_;  // null until `initialize` succeeds
  std::atomic<bool> isDone_ = false;
};

}  // namespace vxcached
