#include "tools/drawview/Program.h"

#include <chrono>
#include <fstream>
#include <iostream>
#include <limits>
#include <memory>
#include <thread>

#include <vx/Report.h>

#include "tools/drawview/CommandLine.h"
#include "tools/drawview/Export.h"
#include "tools/drawview/Page.h"
#include "tools/drawview/Paths.h"
#include "tools/drawview/Recording.h"
#include "tools/drawview/System.h"
#include "tools/drawview/Viewer.h"
#include "tools/drawview/WebServer.h"
#include "tools/runReported.h"

namespace drawview {

namespace {

enum ExitCode { kFine = 0, kDamaged = 1, kFailed = 2 };

constexpr std::chrono::milliseconds kTick(50);
// For the first sender of --once.
constexpr std::chrono::seconds kLongestWait(30);

void report(const std::string& what) {
  rptError("drawview: %s\n", what.c_str());
}

// The user, or another program, reads the addresses at once.
void print(const std::string& line) {
  std::cout << line << '\n';
  if (!std::cout.flush()) throw InputError("cannot write to standard output");
}

void tellPage(const std::string& address, bool open) {
  print("page: " + address);
  if (!open) return;
  if (const vxUtil::Error error = openBrowser(address))
    report(std::string("cannot open the browser: ") + error.message().c_str());
}

int showSenders(const Options& options, const StopRequests& requests) {
  Viewer viewer(options);
  print("senders: " + viewer.listenAddress());
  tellPage(viewer.address(), options.open);
  const auto latest = std::chrono::steady_clock::now() + kLongestWait;
  const auto isOver = [&] {
    const bool isLate = !viewer.hasSender() && std::chrono::steady_clock::now() > latest;
    return requests.isStopped() || (options.once && (viewer.hasServed() || isLate));
  };
  while (!isOver()) {
    std::this_thread::sleep_for(kTick);
    for (const std::string& note : viewer.takeNotes()) report(note);
  }
  return viewer.hasLostRecording() ? kFailed : kFine;
}

using File = std::shared_ptr<std::ifstream>;

RecordingContents readRecording(const std::filesystem::path& path, std::istream& file) {
  RecordingContents contents = scanRecording(file);
  if (!contents.damages.empty() && contents.damages.front().offset == 0)
    throw InputError(pathText(path) + " is no recording");
  for (const Damage& damage : contents.damages)
    report(pathText(path) + ": offset " + std::to_string(damage.offset) + ": " + damage.what);
  if (contents.tornAt)
    report(pathText(path) + ": offset " + std::to_string(*contents.tornAt) +
           ": the last frame is not complete and is left out");
  return contents;
}

void showRecording(const Options& options, const File& file, const RecordingContents& contents,
                   const StopRequests& requests) {
  FrameStore store(std::numeric_limits<std::uint64_t>::max());
  for (const RecordedFrame& frame : contents.frames) {
    // Pages that ask at the same time share the bytes.
    const auto read = [file, frame, known = std::weak_ptr<const std::string>()]() mutable {
      Message message = known.lock();
      if (message) return message;
      if (auto found = readMessage(*file, frame))
        message = std::make_shared<const std::string>(std::move(*found));
      known = message;
      return message;
    };
    store.add({store.frames().size() + 1, frame.name, frame.bytes, read});
  }
  const WebServer server({options.httpPort, kPage, true}, std::move(store));
  tellPage(server.address(), options.open);
  while (!requests.isStopped()) std::this_thread::sleep_for(kTick);
}

int replay(const Options& options, const StopRequests& requests) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(options.replay, error))
    throw InputError(pathText(options.replay) + " is no file");
  const auto file = std::make_shared<std::ifstream>(options.replay, std::ios::binary);
  if (!*file) throw InputError("cannot read " + pathText(options.replay));
  if (std::filesystem::equivalent(options.replay, options.exportTo, error))
    throw InputError("the page would take the place of the recording");
  const RecordingContents contents = readRecording(options.replay, *file);
  if (!options.exportTo.empty() && contents.frames.empty())
    throw InputError(pathText(options.replay) + " holds no frame to export");
  if (options.exportTo.empty())
    showRecording(options, file, contents, requests);
  else
    exportPage({options.exportTo, options.force}, kPage, *file, contents.frames);
  return contents.damages.empty() ? kFine : kDamaged;
}

int run(const Options& options) {
  const StopRequests requests;
  return options.replay.empty() ? showSenders(options, requests) : replay(options, requests);
}

}  // namespace

int runProgram(int argc, const char* const* argv) {
  return runReported("drawview", [&] {
    const auto options = parseCommandLine(argc, argv);
    return options ? run(*options) : kFine;
  });
}

}  // namespace drawview
