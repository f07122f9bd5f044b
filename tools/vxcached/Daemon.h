// The daemon: accepts clients, and finds for each of them who answers its requests.
//
// A process serves the directory of the client that has started it. When another daemon has the
// lock of the directory, the process passes the requests of its client on to that one. A client of
// another directory, which an outdated file with a port has led here, is served by a process that
// is started for it.
#pragma once

#include <atomic>
#include <chrono>
#include <list>
#include <memory>
#include <mutex>
#include <thread>

#include <vx/Tcp.h>

#include "tools/vxcached/Cache.h"
#include "tools/vxcached/Control.h"
#include "tools/vxcached/Log.h"
#include "tools/vxcached/Services.h"
#include "tools/vxcached/Session.h"

namespace vxcached {

/// What `initialize` asks for.
struct Opening {
  vxString::CString directory;
  int n;
  std::int64_t m;
};

class Daemon {
 public:
  using Clock = std::chrono::steady_clock;

  /// `mustStop` is set to end the daemon.
  Daemon(Log& log, double idleSeconds, const std::atomic<bool>& mustStop)
      : log_(log), idleTime_(idleSeconds), mustStop_(mustStop) {}
  ~Daemon();

  /// Listens, and connects to the client that waits on the port.
  vxUtil::Error start(int port);
  /// Serves clients until the daemon must stop, or the last client has been gone for the idle time.
  /// Without a directory the daemon ends with its client.
  void run();

  /// Finds the service for a client and opens the directory there. Called by the threads of the
  /// clients.
  vxUtil::Error open(const Opening& opening, bool isStarter, std::unique_ptr<Service>& service);

 private:
  struct Thread {
    Thread(Daemon& daemon, Log& log, std::unique_ptr<vxTCP::Socket> socket, bool isStarter)
        : session(daemon, log, std::move(socket), isStarter) {}
    Session session;
    std::thread thread;
  };

  vxUtil::Error openFirst(const Opening& opening, std::unique_ptr<Service>& service);
  bool tryFirst(const Opening& opening, Clock::time_point end, std::unique_ptr<Service>& service,
                vxUtil::Error& error);
  void acceptClients(vxUtil::Interval limit);
  void turnAway();
  void addSession(std::unique_ptr<vxTCP::Socket> socket, bool isStarter);
  void dropFinishedSessions();
  void keepDirectory();
  bool mustEnd() const { return mustStop_ || isStopped_; }
  bool isIdle() const;
  bool mayEnd();

  Log& log_;
  const std::chrono::duration<double> idleTime_;
  const std::atomic<bool>& mustStop_;
  std::unique_ptr<vxTCP::Server> server_;
  int port_ = 0;
  std::mutex opening_;
  std::unique_ptr<Cache> cache_;
  std::atomic<Cache*> openCache_ = nullptr;  // `cache_`, once it is open
  std::atomic<bool> isStopped_ = false;
  std::unique_ptr<Control> control_;
  std::list<Thread> sessions_;
  Clock::time_point lastClient_ = Clock::now();
  Clock::time_point nextClearing_ = Clock::now();
};

}  // namespace vxcached
