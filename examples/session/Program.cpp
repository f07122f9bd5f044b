#include "examples/session/Program.h"

#include <iostream>
#include <stdexcept>
#include <system_error>

#include <vx/Process.h>
#include <vx/Report.h>

#include "examples/host/Host.h"
#include "examples/session/CommandLine.h"
#include "examples/session/Session.h"
#include "examples/session/System.h"
#include "examples/surface_fit/InputError.h"
#include "examples/surface_fit/NumericErrors.h"
#include "tools/runReported.h"

namespace session {

namespace {

void say(const std::string& line) {
  std::cout << line << '\n';
}

// The programs that are started are told of files by their full paths.
std::string absolutePath(const std::filesystem::path& folder) {
  std::error_code error;
  const std::u8string path = std::filesystem::absolute(folder, error).lexically_normal().u8string();
  if (error || path.empty())
    throw surfacefit::InputError("'" + folder.string() + "' is no folder; give one with --output");
  const std::string text(path.begin(), path.end());
  return text.ends_with('/') || text.ends_with('\\') ? text.substr(0, text.size() - 1) : text;
}

bool wantsColours() {
  return vxOS::environmentVariable("NO_COLOR").isEmpty() && outputShowsColours();
}

void work(const Options& options) {
  const host::Host host(absolutePath(options.output), say);
  Session session(options);
  session.fit();
  session.undoAndRedo();
  session.save();
  std::cout << session.stepTable() << '\n' << session.summary().text(wantsColours());
}

}  // namespace

int runProgram(int argc, const char* const* argv) {
  const surfacefit::ThrowingNumericErrors numericErrors;
  const auto begin = [&] {
    if (const auto options = parseCommandLine(argc, argv)) work(*options);
    return 0;
  };
  return runReported("session", begin, "not enough memory; thin the points out");
}

}  // namespace session
