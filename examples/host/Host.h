// The services of the library as an application installs them at its start.
#pragma once

#include <functional>
#include <string>

#include <kilnbase/services/cursor_procedure.h>
#include <vx/Report.h>
#include <vx/String.h>

namespace host {

/// Everything that the library cannot know by itself is installed while a host lives, and removed
/// in the opposite order when the host ends. One host at a time.
///
/// The order matters: the sinks come first, so that no message is lost; the choices of the product
/// and the hooks before anything that asks for them; the trace last of all, as it needs a folder.
class Host {
 public:
  using Say = std::function<void(const std::string&)>;

  /// Works in the project "demo" in `folder`, which is made when there is none. `say` is called
  /// with each line that the user sees. Throws std::runtime_error when the project or the trace
  /// cannot be made.
  Host(const std::string& folder, Say say);
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;
  ~Host();

  /// What the windows of the host call when the cursor moves.
  CursorProcedure cursorMoved;

  /// What the main loop does after each event: draws what waits for it.
  void finishEvent();

 private:
  void installUndo();
  void makeProject(const std::string& folder);
  void removeAll();

  RptSinks sinksBefore_;
};

}  // namespace host
