#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

#include <vx/os/Process.h>
#include <vx/os/posix/BlockedSignals.h>
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

// A pipe that no program inherits, whose ends are no standard streams. -1 stands for a closed end.
struct Pipe {
  Pipe() {
    int made[2];
    if (pipe2(made, O_CLOEXEC) != 0) return;
    reading = fcntl(made[0], F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    writing = fcntl(made[1], F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(made[0]);
    close(made[1]);
  }
  ~Pipe() {
    if (reading != -1) close(reading);
    closeWriting();
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  bool isOpen() const { return reading != -1 && writing != -1; }
  void closeWriting() {
    if (writing != -1) close(std::exchange(writing, -1));
  }

  int reading = -1;
  int writing = -1;
};

// What a forked child needs to become another program. The child of a process with threads may call
// async-signal-safe functions only, and takes no memory.
struct Launch {
  const char* program;
  char* const* arguments;
  const char* folder;  // may be empty
  int report;          // where the number of the error goes
};

[[noreturn]] void endWithError(int report) {
  const int error = errno;
  [[maybe_unused]] const ssize_t written = write(report, &error, sizeof error);
  _exit(EXIT_FAILURE);
}

void resetSignals() {
  struct sigaction standard = {};
  standard.sa_handler = SIG_DFL;
  for (int signal = 1; signal < NSIG; ++signal) sigaction(signal, &standard, nullptr);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

// Leaves the null device as 0 to 2, the report, which exec closes, as 3, and nothing else.
bool resetDescriptors(int& report) {
  constexpr int kReport = STDERR_FILENO + 1;
  const int null = open("/dev/null", O_RDWR);
  if (null == -1) return false;
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (dup2(null, stream) == -1) return false;
  if (report != kReport && dup3(report, kReport, O_CLOEXEC) == -1) return false;
  report = kReport;
  closefrom(kReport + 1);
  return true;
}

[[noreturn]] void becomeProgram(Launch launch) {
  resetSignals();
  if (resetDescriptors(launch.report) && (*launch.folder == '\0' || chdir(launch.folder) == 0))
    execve(launch.program, launch.arguments, environ);
  endWithError(launch.report);
}

// The child leads the new session and ends at once. The system adopts the grandchild, which is the
// program and can never get a terminal by opening one.
[[noreturn]] void becomeDetachedProgram(const Launch& launch) {
  if (setsid() == -1) endWithError(launch.report);
  const pid_t child = fork();
  if (child == 0) becomeProgram(launch);
  if (child == -1) endWithError(launch.report);
  _exit(EXIT_SUCCESS);
}

// Waits until there is something to read or the other end is closed. False after the longest time.
bool awaitReport(int report) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::seconds(10);
  pollfd waiting = {.fd = report, .events = POLLIN, .revents = 0};
  int ready;
  do {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    ready = poll(&waiting, 1, std::max(static_cast<int>(left.count()), 0));
  } while (ready == -1 && errno == EINTR);
  return ready == 1;
}

// The number of the error that the other end reports; 0 when that end is closed without a report.
// A child that another thread of the host forks meanwhile may hold that end open for ever: the
// program counts as started when no report arrives.
int readError(int report) {
  int error = 0;
  if (!awaitReport(report)) return 0;
  while (read(report, &error, sizeof error) == -1 && errno == EINTR) {
  }
  return error;
}

// The path for a process that changes its folder; empty when the current folder is gone.
CString fixedPath(const CString& program, const CString& folder) {
  CString path = systemPath(program);
  if (folder.isEmpty() || path.startsWith("/")) return path;
  std::error_code gone;
  const std::string current = std::filesystem::current_path(gone).string();
  return gone ? CString() : CString(current) + "/" + path;
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

// The file of the mapping that holds this function. (`dladdr` tells a path that may be relative to
// a folder which is no longer the current one.)
CString ownLibrary() {
  const auto here = reinterpret_cast<std::uintptr_t>(&ownLibrary);
  std::ifstream mappings("/proc/self/maps");
  for (std::string line; std::getline(mappings, line);) {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    const bool isRange = std::sscanf(line.c_str(), "%" SCNxPTR "-%" SCNxPTR, &begin, &end) == 2;
    const std::size_t path = line.find('/');
    if (isRange && begin <= here && here < end && path != std::string::npos)
      return CString(std::string_view(line).substr(path));
  }
  return {};
}

CString environmentVariable(const char* name) {
  return std::getenv(name);
}

bool hasEnvironmentVariable(const char* name) noexcept {
  return std::getenv(name) != nullptr;
}

int currentDrive() noexcept {
  return 0;
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

int startDetached(const vx::vector<CString>& command, const CString& folder) {
  const CString program = fixedPath(command.front(), folder);
  const CString place = systemPath(folder);
  const std::vector<char*> arguments = argumentPointers(command);
  Pipe report;
  if (!report.isOpen()) return errno;
  pid_t child;
  {
    const BlockedSignals blocked;  // no handler of the host runs in the child
    child = fork();
    if (child == 0)
      becomeDetachedProgram({program.c_str(), arguments.data(), place.c_str(), report.writing});
  }
  if (child == -1) return errno;
  report.closeWriting();
  const int error = readError(report.reading);
  waitFor(child);
  return error;
}

}  // namespace vxOS::process
