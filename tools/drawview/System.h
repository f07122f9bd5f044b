// What differs between the systems.
#pragma once

#include <string>

#include <vx/Error.h>

namespace drawview {

/// Whether a port that was in use a moment ago can only be taken again with SO_REUSEADDR. Elsewhere
/// that option would let others take a port in use.
extern const bool kPortsNeedReuse;

/// Shows an address of the web in the user's browser, without waiting.
vxUtil::Error openBrowser(const std::string& address);

/// Catches the wishes that the program may end: Ctrl-C, SIGTERM, the end of the terminal, and on
/// Windows the end of the console or the session, which then waits for the object to go. One object
/// at a time.
class StopRequests {
 public:
  StopRequests();
  ~StopRequests();
  StopRequests(const StopRequests&) = delete;
  StopRequests& operator=(const StopRequests&) = delete;

  bool isStopped() const;
};

}  // namespace drawview
