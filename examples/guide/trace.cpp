// The program of docs/guide/trace.md.
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>

#include <kilnbase/services/MorlaTrace.h>
#include <vx/Process.h>
#include <vx/SysInfo.h>

#include "examples/guide/ScratchFolder.h"
#include "examples/guide/expect.h"

namespace {

using guide::expect;

//! [shortest]
// Traces, and ends as a crash does: no destructor runs, and nothing is flushed.
void crash(const char* folder) {
  MorlaTrace::initialize(folder, 1 << 20, 2);  // a ring of 1 MiB; lines of the levels 1 and 2
  MorlaTrace::trace1(MorlaTrace::UI, "open %s", "wing.wire");
  MorlaTrace::trace2(MorlaTrace::Picking, "picked %d of %d", 3, 7);
  std::_Exit(3);
}
//! [shortest]

//! [lines]
// Appends the text behind the time, such as "<UI> open wing.wire".
void addLine(void* lines, const char* text) {
  const std::string_view line(text);
  *static_cast<std::string*>(lines) += std::string(line.substr(line.find('<'))) + '\n';
}

std::string tracedLines() {
  std::string lines;
  MorlaTrace::dump(addLine, &lines);  // from the oldest to the newest
  return lines;
}
//! [lines]

void toText(const std::string& folder) {
  //! [text]
  MorlaTrace::initLog((folder + "/logs").c_str(), "wing");  // where texts go, and their name
  MorlaTrace::dumpLog();  // for a mail to support: MorlaTraceLog-USER-wing-STAMP.log
  //! [text]
  const std::filesystem::directory_iterator logs(folder + "/logs");
  std::string line;
  std::getline(std::ifstream(logs->path()), line);
  expect(line.ends_with("<Undo> undo \"Move\""));
}

void levels(const std::string& folder) {
  //! [levels]
  MorlaTrace::initialize(folder.c_str(), 4096, 1);
  MorlaTrace::trace1(MorlaTrace::Undo, "undo \"%s\"", "Move");
  MorlaTrace::trace2(MorlaTrace::Undo, "costly detail");  // above the level: dropped
  expect(tracedLines() == "<Undo> undo \"Move\"\n");
  toText(folder);  // see "Reading"
  MorlaTrace::finalize();
  expect(!MorlaTrace::enabled());
  expect(tracedLines().empty());  // the level is 0; the file stays, for tracelog
  //! [levels]
}

void ring(const std::string& folder) {
  //! [ring]
  MorlaTrace::initialize(folder.c_str(), 512, 1);  // the least
  for (int i = 0; i < 1000; ++i) MorlaTrace::trace1(MorlaTrace::UI, "step %d", i);
  const std::string lines = tracedLines();
  expect(lines.find("step 999\n") != std::string::npos);  // the newest stay
  expect(lines.find("step 900\n") == std::string::npos);
  MorlaTrace::finalize();
  //! [ring]
}

int run(const vx::vector<vxString::CString>& command) {
  return vxOS::ProcessManager::getInstance().startSync(command).value_or(-1);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2) crash(argv[1]);
  const guide::ScratchFolder crashed("guide_trace_crashed");
  const vxString::CString folder(crashed.string().c_str());
  //! [after]
  expect(run({vxOS::programPath(), folder}) == 3);  // this program, which crashes
  expect(run({APP_getBinaryPath("tracelog"), folder, "--grep", "picked 3 of 7"}) == 0);
  //! [after]
  // On Windows the next run deletes this folder: the trace keeps its file open.
  const guide::ScratchFolder own("guide_trace_out");
  levels(own.string());
  ring(own.string());
}
