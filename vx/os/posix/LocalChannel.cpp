#include <cerrno>
#include <chrono>
#include <cstring>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

#include <vx/LocalChannel.h>
#include <vx/os/File.h>
#include <vx/os/posix/Owned.h>

namespace vxOS {

namespace {

using vxString::CString;
using vxUtil::Error;

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kAskingTime(5);  // for question and answer together
constexpr std::size_t kMostQuestionBytes = 4096;
constexpr std::size_t kMostAnswerBytes = std::size_t{1} << 30;

Error failure(const char* action) {
  const int error = errno;
  return {error, CString("cannot ") + action + ": " + file::errorText(error)};
}

// A path to the socket that is short enough however long the directory's path is.
sockaddr_un addressOf(std::intptr_t directory, const CString& name) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  const CString path =
      CString::format("/proc/self/fd/%d/%s", static_cast<int>(directory), name.c_str());
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  return address;
}

const sockaddr* system(const sockaddr_un& address) {
  return reinterpret_cast<const sockaddr*>(&address);
}

// The next wait of the socket ends at `end`; false when that has passed.
bool limitWait(int socket, Clock::time_point end) {
  const auto rest = std::chrono::duration_cast<std::chrono::microseconds>(end - Clock::now());
  if (rest.count() <= 0) return false;
  const timeval limit = {rest.count() / 1'000'000, rest.count() % 1'000'000};
  return setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit) == 0 &&
         setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit) == 0;
}

bool peerIsSameUser(int socket) {
  ucred peer = {};
  socklen_t size = sizeof peer;
  return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

bool sendAll(int socket, std::string_view bytes, Clock::time_point end) {
  while (!bytes.empty()) {
    if (!limitWait(socket, end)) return false;
    const ssize_t sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0 && errno != EINTR) return false;
    if (sent > 0) bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return shutdown(socket, SHUT_WR) == 0;
}

bool receiveAll(int socket, std::size_t most, Clock::time_point end, CString& text) {
  std::string bytes;
  char piece[4096];
  for (;;) {
    if (!limitWait(socket, end)) return false;
    const ssize_t count = recv(socket, piece, sizeof piece, 0);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 || bytes.size() > most) return false;
    if (count == 0) break;
    bytes.append(piece, static_cast<std::size_t>(count));
  }
  text = CString(std::string_view(bytes));
  return true;
}

}  // namespace

Error LocalChannel::listen(const Directory& directory, const CString& name) {
  close();
  directory.remove(name);
  Owned socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const sockaddr_un address = addressOf(directory.handle_, name);
  // The mode of the socket becomes that of its file.
  if (!socket || fchmod(socket.get(), 0600) != 0 ||
      bind(socket.get(), system(address), sizeof address) != 0 || ::listen(socket.get(), 8) != 0)
    return failure("open the private channel");
  handle_ = socket.release();
  directory_ = &directory;
  name_ = name;
  return {};
}

void LocalChannel::serve(int milliseconds, const std::function<CString(const CString&)>& answer) {
  pollfd watched = {static_cast<int>(handle_), POLLIN, 0};
  if (poll(&watched, 1, milliseconds) <= 0) return;
  const Owned asker(accept4(watched.fd, nullptr, nullptr, SOCK_CLOEXEC));
  if (!asker || !peerIsSameUser(asker.get())) return;
  const auto end = Clock::now() + kAskingTime;
  CString question;
  if (receiveAll(asker.get(), kMostQuestionBytes, end, question))
    sendAll(asker.get(), answer(question).view(), end);
}

void LocalChannel::interrupt() noexcept {
  if (handle_ != Directory::kNone) shutdown(static_cast<int>(handle_), SHUT_RDWR);
}

void LocalChannel::close() noexcept {
  const auto handle = std::exchange(handle_, Directory::kNone);
  if (handle == Directory::kNone) return;
  ::close(static_cast<int>(handle));
  unlinkat(static_cast<int>(directory_->handle_), name_.c_str(), 0);
}

Error LocalChannel::ask(const Directory& directory, const CString& name, const CString& question,
                        CString& answer) {
  const Owned socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!socket) return failure("make a socket");
  const auto end = Clock::now() + kAskingTime;
  if (!limitWait(socket.get(), end)) return failure("limit the wait");
  const sockaddr_un address = addressOf(directory.handle_, name);
  if (connect(socket.get(), system(address), sizeof address) != 0)
    return failure("reach the process that serves the folder");
  if (!peerIsSameUser(socket.get())) return {1, "the folder is served by another user"};
  if (!sendAll(socket.get(), question.view(), end) ||
      !receiveAll(socket.get(), kMostAnswerBytes, end, answer))
    return failure("get an answer");
  return {};
}

}  // namespace vxOS
