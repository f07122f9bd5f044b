// The program of docs/guide/host.md.
#include <cstdint>
#include <string>

#include <kilnbase/memory/MoveableMemory.h>
#include <kilnbase/services/MorlaBehaviour.h>
#include <kilnbase/services/cursor_procedure.h>
#include <kilnbase/services/redraw.h>
#include <kilnbase/services/rtb_init.h>
#include <vx/Memory.h>
#include <vx/Report.h>

#include "examples/guide/ScratchFolder.h"
#include "examples/guide/expect.h"

namespace {

using guide::expect;

//! [shortest]
std::string gLog;  // a real host has windows

void showError(const char* text) {
  gLog += text;
}

void draw() {  // called by the library, and by the main loop after each event
  if (redraw_get_pending_planes() != 0 || redraw_get_pending_redraw_all()) gLog += "drawn\n";
  redraw_reset_pending();
}

void host() {
  RptSinks sinks = {};
  sinks.error = showError;
  const RptSinks before = rptSetSinks(&sinks);  // first of all: where messages go
  rtbInit_redrawSetRedrawPending(draw);         // then what the library calls

  redraw_add_model_planes();  // modelling code asks,
  rptError("no such curve\n");
  redraw_any_pending();  // and the main loop draws

  rtbInit_redrawSetRedrawPending(nullptr);  // at the end, in the opposite order
  rptSetSinks(&before);
}
//! [shortest]

void requests() {
  //! [requests]
  redraw_add_planes(0x10, 3);  // planes are bits whose meaning is yours; from layer 3 on
  redraw_add_planes(0x20, 2);
  expect(redraw_get_pending_planes() == 0x30);
  expect(redraw_get_pending_layers() == 2);  // the lowest
  redraw_reset_pending();
  //! [requests]
}

//! [cursor]
std::intptr_t gPosition = 0;
int gTools = 0;

void pick(std::intptr_t position) {
  gPosition = position;
}
void highlight(std::intptr_t) {
  ++gTools;
}
//! [cursor]

void cursor() {
  //! [follow]
  set_cursor_procedure(pick);       // the one primary procedure: the current tool
  add_cursor_procedure(highlight);  // and any number of others
  const CursorProcedure moved = get_cursor_procedure();  // what your windows call
  moved(17);
  expect(gPosition == 17);
  expect(gTools == 1);
  remove_cursor_procedure(highlight);
  set_cursor_procedure(nullptr);
  //! [follow]
}

void choices() {
  //! [choices]
  class Quiet : public MorlaBehaviour {
   public:
    bool saveOnExit() const override { return false; }
  };
  expect(MorlaBehaviour_saveOnExit());
  MorlaBehaviour::set(new Quiet);  // the library owns it from now on
  expect(!MorlaBehaviour_saveOnExit());
  MorlaBehaviour::set(nullptr);  // the defaults again
  expect(MorlaBehaviour_saveOnExit());
  //! [choices]
}

void memory() {
  //! [tracked]
  auto* counts = static_cast<int32_t*>(MA_malloc(8 * sizeof(int32_t), __LINE__, __FILE__));
  expect(counts != nullptr);
  MA_free(counts);
  expect(MA_outstanding().blocks == 0);  // of debug builds of the library: all came back
  //! [tracked]
  const guide::ScratchFolder scratch("guide_host_out");
  const vxString::IString folder = vxString::CString(scratch.string().c_str()).asWide();
  //! [store]
  const vxUtil::Error error = vxKilnBase::moveableMemory().initialize(folder, L"model-");
  expect(!error);
  vxOS::MoveableMemory& store = *vxKilnBase::moveableMemory().get();
  const auto block = store.allocate(1000 * sizeof(double));
  if (auto* heights = static_cast<double*>(store.lock(block))) heights[999] = 0.5;
  store.unlock(block);  // may leave the address space now
  store.free(block);
  //! [store]
  vxKilnBase::moveableMemory() = {};
}

}  // namespace

int main() {
  host();
  expect(gLog == "no such curve\ndrawn\n");
  requests();
  cursor();
  choices();
  memory();
}
