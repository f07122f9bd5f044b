#include "examples/host/Host.h"

#include <stdexcept>
#include <utility>

#include <kilnbase/services/MorlaBehaviour.h>
#include <kilnbase/services/MorlaTrace.h>
#include <kilnbase/services/mr_undo.h>
#include <kilnbase/services/redraw.h>
#include <kilnbase/util/db_filename.h>
#include <vx/File.h>
#include <vx/Filename.h>
#include <vx/Undo.h>

#include "examples/host/Hooks.h"

namespace host {

namespace {

using vxOS::Filename;
using vxString::CString;

constexpr std::size_t kTraceBytes = 1 << 16;
constexpr int kTraceLevel = 2;
constexpr vxUndo::Limits kUndoLimits = {.groups = 100, .bytes = 64 << 20};

Host::Say gSay;

void show(const char* kind, const char* text) {
  gSay(CString::format("%s: %s", kind, text).trimmed().c_str());
}

//! [sinks]
// Members that are null stay the library's: this host has no window in which to ask or to wait.
constexpr RptSinks kSinks = {.error = [](const char* text) { show("error", text); },
                             .user = [](const char* text) { show("message", text); },
                             .status = nullptr,
                             .checkAbort = nullptr,
                             .sleep = nullptr,
                             .confirmOK = nullptr,
                             .debug = [](int, const char* text) { show("debug", text); }};
//! [sinks]

//! [behaviour]
class Behaviour : public MorlaBehaviour {
 public:
  vxString::IString getProductPrefix() override { return L"Pebble"; }
  const char* getUserPrefsFileName() const override { return "PebblePrefs"; }
  bool saveOnExit() const override { return false; }
};
//! [behaviour]

//! [cursor]
void pick(std::intptr_t position) {
  MorlaTrace::trace1(MorlaTrace::Picking, "cursor at %d", static_cast<int>(position));
}

void showPosition(std::intptr_t position) {
  rptUser("the cursor is at %d", static_cast<int>(position));
}
//! [cursor]

}  // namespace

//! [begin]
Host::Host(const std::string& folder, Say say) {
  gSay = std::move(say);
  sinksBefore_ = rptSetSinks(&kSinks);
  try {
    MorlaBehaviour::set(new Behaviour);
    installHooks([](const std::string& what) { gSay("library: " + what); });
    installUndo();
    cursorMoved = get_cursor_procedure();
    set_cursor_procedure(pick);
    add_cursor_procedure(showPosition);
    makeProject(folder);
  } catch (const std::exception&) {
    removeAll();
    throw;
  }
}
//! [begin]

Host::~Host() {
  removeAll();
}

//! [redraw]
void Host::finishEvent() {
  redraw_any_pending();
  if (redraw_get_pending_planes() != 0) {
    gSay(CString::format("draw the planes 0x%X from layer %d on", redraw_get_pending_planes(),
                         redraw_get_pending_layers())
             .c_str());
  }
  redraw_reset_pending();
}
//! [redraw]

void Host::installUndo() {
  vxKilnBase::undoInit();
  if (!vxUndo::manager()) throw std::runtime_error("no undo manager");
  vxUndo::manager()->setLimits(kUndoLimits);
}

//! [project]
// The project path ends with a separator, and the project has a folder of its own.
void Host::makeProject(const std::string& folder) {
  const CString path(folder.c_str()), name = "demo";
  const CString project = Filename::join(path, name);
  if (const vxUtil::Error error = vxOS::File::makeDirectoryAll(project))
    throw std::runtime_error(error.message().c_str());
  Db_set_project_path((path + "\\").c_str());
  Db_set_project_name(name.c_str());
  Db_set_mr_cwd(path.c_str());
  Db_init_paths();
  if (!MorlaTrace::initialize(project.c_str(), kTraceBytes, kTraceLevel))
    throw std::runtime_error("cannot make the trace in " + folder);
}
//! [project]

//! [end]
void Host::removeAll() {
  MorlaTrace::finalize();
  remove_cursor_procedure(showPosition);
  set_cursor_procedure(nullptr);
  vxUndo::installManager(nullptr);
  removeHooks();
  MorlaBehaviour::set(nullptr);
  rptSetSinks(&sinksBefore_);
  gSay = nullptr;
}
//! [end]

}  // namespace host
