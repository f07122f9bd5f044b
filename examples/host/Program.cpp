#include "examples/host/Program.h"

#include <bit>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>

#include <kilnbase/services/FontProperties.h>
#include <kilnbase/services/MorlaBehaviour.h>
#include <kilnbase/services/MorlaTrace.h>
#include <kilnbase/services/capitalization.h>
#include <kilnbase/services/mr_undo.h>
#include <kilnbase/services/rtb_init.h>
#include <kilnbase/util/db_filename.h>
#include <kilnbase/version.h>
#include <vx/Undo.h>

#include "examples/host/Document.h"
#include "examples/host/Hooks.h"
#include "examples/host/Host.h"
#include "examples/host/ProjectFiles.h"

namespace host {

namespace {

using vxString::CString;

constexpr std::size_t kPathSize = 264;

constexpr const char* kHelp =
    "Usage: host [FOLDER]\n\n"
    "Starts the services of libKilnBase as an application does, works a little in the project\n"
    "\"demo\" in FOLDER (host_out by default), and tells what happens.\n\n"
    "  --help     this text\n"
    "  --version  the version\n\n"
    "Exit codes: 0, or 2 when the command line, FOLDER or standard output cannot be used.\n\n"
    "Example:\n"
    "  $ host /tmp/host_out\n";

void say(const std::string& line) {
  std::cout << line << '\n';
}

// Undo takes the whole group back at once.
void addSpheres(Spheres& spheres, Brush& brush) {
  MR_undo_push_new_group("Add Spheres", false);
  brush.startChange();
  brush.radius = 2.5;
  brush.endChange();
  for (int i = 1; i <= 3; ++i) {
    if (!addSphere(spheres, brush.radius * i)) throw std::runtime_error("cannot add a sphere");
    MorlaTrace::trace1(MorlaTrace::UI, "sphere %d", i);
  }
  MR_undo_pop_group(true);
}

void require(const vxUtil::Error& error) {
  if (error) throw std::runtime_error(error.message().c_str());
}

void sayState(const char* action, const Spheres& spheres, const Brush& brush) {
  const vxUndo::Manager& manager = *vxUndo::manager();
  say(CString::format("%s: %zu spheres, brush %g, undo \"%s\", redo \"%s\"", action, spheres.size(),
                      brush.radius, manager.undoName().c_str(), manager.redoName().c_str())
          .c_str());
}

// The new file takes the place of the old one when it is complete.
void save(const Spheres& spheres) {
  const std::filesystem::path file = projectFile("spheres.0001", WIRE_DATA);
  std::filesystem::path unfinished = file;
  unfinished += ".new";
  std::ofstream stream(unfinished, std::ios::binary);
  for (const double radius : spheres) stream << radius << '\n';
  stream.close();
  if (!stream) throw std::runtime_error("cannot write " + file.string());
  std::filesystem::rename(unfinished, file);
  vxUndo::manager()->markSaved();
}

void sayWhereSaved() {
  MR_Filename frame("spheres.1", WIRE_DATA);
  char path[kPathSize];
  const bool isFound = frame.Filename(path) != 0;
  const std::string project = Db_default_path(DIR_DATA)->path;
  say("frame 1 of " + std::string(frame.BaseFilename()) +
      (isFound ? " is saved as " + std::string(path).substr(project.size()) : " is lost"));
}

void sayChoices() {
  const CString product = MorlaBehaviour::get()->getProductPrefix().asMultibyte();
  const CString title = vxKilnBase::toBookTitleCapitalization(product + " and the art of NOTHING");
  const FontProperties font("Courier", 1000, 50, 1, 0);
  say(CString::format("%s, in %s of %d points; saves on exit: %s", title.c_str(),
                      font.getFontFamily().c_str(), font.getFontSize(),
                      MorlaBehaviour_saveOnExit() ? "yes" : "no")
          .c_str());
}

// What the library's renderer and polygon code do in a real application.
void callHooks() {
  Light key{"key light", nullptr, false};
  PS_Polyset polyset;
  const auto light = std::bit_cast<std::intptr_t>(&key);
  create_itermats(light, 0, 0, 0);
  RI_setPSColoured(light, 1, 0, 0);
  PS_polyset_delete_notify(&polyset);
  say(std::string(std::bit_cast<const char*>(RI_getName(light, 0, 0, 0))) +
      " coloured: " + std::to_string(RI_getPSColoured(light, 0, 0, 0)));
}

void sayTrace() {
  MorlaTrace::dump(
      [](void*, const char* text) {
        const std::string_view line(text);
        say("traced " + std::string(line.substr(line.find('<'))));
      },
      nullptr);
}

//! [work]
void work(const std::string& folder) {
  Spheres spheres;  // the document outlives the host, whose undo commands refer to the document
  Brush brush;
  Host host(folder, say);
  sayChoices();
  addSpheres(spheres, brush);
  host.finishEvent();
  sayState("added", spheres, brush);
  require(vxUndo::manager()->undo());
  host.finishEvent();
  sayState("undone", spheres, brush);
  require(vxUndo::manager()->redo());
  host.finishEvent();
  sayState("redone", spheres, brush);
  save(spheres);
  sayWhereSaved();
  host.cursorMoved(17);
  callHooks();
  sayTrace();
}
//! [work]

void run(int argc, const char* const* argv) {
  const std::string_view argument = argc > 1 ? argv[1] : "host_out";
  if (argc > 2 || argument.empty()) throw std::runtime_error("expected one folder; try --help");
  if (argument == "--help") {
    std::cout << kHelp;
  } else if (argument == "--version") {
    say("host " + std::string(kilnbaseVersion()));
  } else if (argument.starts_with('-')) {
    throw std::runtime_error("unknown option " + std::string(argument) + "; try --help");
  } else {
    work(std::string(argument));
  }
}

}  // namespace

int runProgram(int argc, const char* const* argv) {
  try {
    run(argc, argv);
    if (!std::cout.flush()) throw std::runtime_error("cannot write to standard output");
    return 0;
  } catch (const std::exception& error) {
    rptError("host: %s\n", error.what());
  }
  return 2;
}

}  // namespace host
