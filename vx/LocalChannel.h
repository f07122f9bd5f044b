// Questions to the process that serves a directory, by other processes of the same user.
#pragma once

#include <cstdint>
#include <functional>

#include <vx/Directory.h>
#include <vx/Error.h>
#include <vx/String.h>
#include <vx/export.h>

namespace vxOS {

/// The end that answers. The channel belongs to a directory, not to a port: whoever may open the
/// directory's files may ask. It is a socket in the directory, or a named pipe on Windows.
class VX_API LocalChannel {
 public:
  LocalChannel() = default;
  ~LocalChannel() { close(); }
  LocalChannel(const LocalChannel&) = delete;
  LocalChannel& operator=(const LocalChannel&) = delete;

  /// Opens the channel, in the place of one that a dead process has left. `directory` outlives the
  /// channel.
  vxUtil::Error listen(const Directory& directory, const vxString::CString& name);
  /// Waits for a question for at most `milliseconds`, and answers it. An asker who is slow or
  /// belongs to another user gets no answer.
  void serve(int milliseconds,
             const std::function<vxString::CString(const vxString::CString&)>& answer);
  /// Stops answering. Askers find nobody.
  void close() noexcept;
  /// Ends the wait of `serve` from another thread, for good.
  void interrupt() noexcept;

  /// Asks the process that has opened the channel.
  static vxUtil::Error ask(const Directory& directory, const vxString::CString& name,
                           const vxString::CString& question, vxString::CString& answer);

 private:
  std::intptr_t handle_ = Directory::kNone;
  const Directory* directory_ = nullptr;
  vxString::CString name_;
};

}  // namespace vxOS
