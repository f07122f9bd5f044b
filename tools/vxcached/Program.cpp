#include "tools/vxcached/Program.h"

#include <atomic>
#include <csignal>
#include <iostream>
#include <stdexcept>

#include <vx/Error.h>
#include <vx/Report.h>

#include "tools/runReported.h"
#include "tools/vxcached/CommandLine.h"
#include "tools/vxcached/Control.h"
#include "tools/vxcached/Daemon.h"
#include "tools/vxcached/Log.h"

namespace vxcached {

namespace {

using vxString::CString;

std::atomic<bool> mustStop = false;
static_assert(std::atomic<bool>::is_always_lock_free);  // a signal handler may set it

void require(const vxUtil::Error& error) {
  if (error) throw std::runtime_error(error.message().c_str());
}

void serve(const Options& options) {
  Log log;
  if (!options.log.empty()) require(log.open(options.log.c_str()));
  Daemon daemon(log, options.idleSeconds, mustStop);
  require(daemon.start(options.port));
  daemon.run();
}

void run(const Options& options) {
  CString text;
  if (!options.list.empty()) {
    require(listCache(options.list.c_str(), text));
    std::cout << text.view();
  } else if (!options.stop.empty()) {
    require(stopDaemon(options.stop.c_str()));
  } else {
    serve(options);
  }
}

}  // namespace

int runProgram(int argc, const char* const* argv) {
  std::signal(SIGTERM, [](int) { mustStop = true; });
  std::signal(SIGINT, [](int) { mustStop = true; });
  return runReported("vxcached", [&] {
    if (const auto options = parseCommandLine(argc, argv)) run(*options);
    return 0;
  });
}

}  // namespace vxcached
