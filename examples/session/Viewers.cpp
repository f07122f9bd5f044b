#include "examples/session/Viewers.h"

#include <chrono>
#include <fstream>
#include <optional>
#include <sstream>
#include <utility>

#include <vx/FileLock.h>
#include <vx/Process.h>
#include <vx/Report.h>
#include <vx/SysInfo.h>
#include <vx/Tcp.h>

namespace session {

namespace {

namespace fs = std::filesystem;

using vxString::CString;
using vxUtil::Interval;

constexpr std::chrono::seconds kLongestStart(20);
constexpr std::chrono::seconds kLongestEnd(20);
constexpr unsigned kTickMilliseconds = 20;
const Interval kConnectLimit(1.0);
// For the frames of much geometry.
const Interval kFrameLimit(60.0);

CString textOf(const fs::path& path) {
  const std::u8string text = path.u8string();
  return CString(std::string_view(reinterpret_cast<const char*>(text.data()), text.size()));
}

fs::path withEnding(fs::path path, const char* ending) {
  return path += ending;
}

// A port that is free now; 0 when there is none.
int freePort() {
  vxTCP::Server server(vxTCP::Server::kAnyPort, 1);
  server.setLoopbackOnly();
  return server.listen() ? 0 : server.getPort();
}

// Asks again and again until the answer is yes or the time is over.
template <class Question>
bool await(std::chrono::seconds limit, Question question) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!question()) {
    if (std::chrono::steady_clock::now() > end) return false;
    rptSleep(kTickMilliseconds);
  }
  return true;
}

}  // namespace

//! [link]
bool FrameLink::connect(int port, Interval limit) {
  auto socket = std::make_unique<vxTCP::Socket>(vxTCP::Address::localhost(port));
  if (socket->connect(limit) || !socket->peerIsSameUser()) return false;
  protocol_.setSocket(std::move(socket));
  protocol_.setTimeout(kFrameLimit);
  return isConnected_ = true;
}
//! [link]

void FrameLink::send(const vxKilnBase::KilnDebugDrawFrame& frame) {
  if (!isConnected_ || hasFailed_) return;
  if (protocol_.sendFrame(frame))
    ++framesSent_;
  else
    hasFailed_ = true;
}

//! [record]
Recorder::Recorder(const fs::path& file) : file_(file), unfinished_(withEnding(file, ".new")) {
  const int port = freePort();
  const vx::vector<CString> command = {APP_getBinaryPath("drawview"),
                                       "--listen",
                                       CString::format("%d", port),
                                       "--record",
                                       textOf(unfinished_),
                                       "--force",
                                       "--once"};
  if (vxOS::ProcessManager::getInstance().startAsync(command, vxOS::Filename()))
    problem_ = "drawview is not there: no recording, and nothing in three dimensions";
  else if (!await(kLongestStart, [&] { return link_.connect(port, kConnectLimit); }))
    problem_ = "drawview does not answer: no recording, and nothing in three dimensions";
}
//! [record]

// The viewer holds a lock on the file as long as it lives.
bool Recorder::isWritten() const {
  vxOS::FileLock lock;
  return lock.acquire(textOf(unfinished_));
}

bool Recorder::finish() {
  if (!problem_.empty()) return false;
  link_.disconnect();
  std::error_code error;
  if (link_.hasFailed() || !await(kLongestEnd, [this] { return isWritten(); }))
    problem_ = "the recording broke off";
  else if (fs::rename(unfinished_, file_, error); error)
    problem_ = "cannot write " + file_.string();
  return problem_.empty();
}

std::string Recorder::exportPage() const {
  const fs::path page = withEnding(file_, ".html");
  const std::optional<int> code = vxOS::ProcessManager::getInstance().startSync(
      {APP_getBinaryPath("drawview"), "--replay", textOf(file_), "--export", textOf(page),
       "--force"});
  std::ostringstream text;
  if (code == 0) text << std::ifstream(page, std::ios::binary).rdbuf();
  std::error_code ignored;
  fs::remove(page, ignored);
  return text.str();
}

}  // namespace session
