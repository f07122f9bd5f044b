#include <cerrno>
#include <cstdlib>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <vx/os/Process.h>
#include <vx/os/posix/Path.h>

namespace vxOS::process {

namespace {

using vxString::CString;

// The actions of the child before it becomes another program.
class SpawnActions {
 public:
  SpawnActions() { posix_spawn_file_actions_init(&actions_); }
  ~SpawnActions() { posix_spawn_file_actions_destroy(&actions_); }
  SpawnActions(const SpawnActions&) = delete;
  SpawnActions& operator=(const SpawnActions&) = delete;

  bool closeAllButStandardStreams() {
    return posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1) == 0;
  }
  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_;
};

// The arguments in the form for exec. They point into the texts of `command`.
std::vector<char*> argumentPointers(const vx::vector<CString>& command) {
  std::vector<char*> pointers;
  for (const CString& text : command) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

std::optional<int> waitFor(pid_t child) {
  int status = 0;
  pid_t ended;
  do {
    ended = waitpid(child, &status, 0);
  } while (ended == -1 && errno == EINTR);
  if (ended != child || !WIFEXITED(status)) return std::nullopt;
  return WEXITSTATUS(status);
}

}  // namespace

const char* const kSeparator = "/";
const char* const kProgramEnding = "";

CString ownProgram() {
  std::vector<char> path(256);
  for (;; path.resize(2 * path.size())) {
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    if (length < 0) return {};
    const auto count = static_cast<std::size_t>(length);
    if (count < path.size()) return CString(std::string_view(path.data(), count));
  }
}

CString environmentVariable(const char* name) {
  return std::getenv(name);
}

std::optional<int> run(const vx::vector<CString>& command) {
  const CString program = systemPath(command.front());
  const std::vector<char*> arguments = argumentPointers(command);
  SpawnActions actions;
  pid_t child;
  if (!actions.closeAllButStandardStreams() ||
      posix_spawn(&child, program.c_str(), actions.get(), nullptr, arguments.data(), environ) != 0)
    return std::nullopt;
  return waitFor(child);
}

}  // namespace vxOS::process
