// The program of docs/guide/undo.md.
#include <memory>
#include <vector>

#include <kilnbase/services/StatefulUndoCmd.h>
#include <kilnbase/services/UndoCommand.h>
#include <kilnbase/services/mr_undo.h>
#include <kilnbase/services/redraw.h>
#include <vx/Undo.h>

#include "examples/guide/expect.h"

namespace {

using guide::expect;

//! [command]
struct Document {
  std::vector<double> radii;
};

class AddSphere : public vxUndo::Command {
 public:
  AddSphere(Document& document, double radius)
      : Command("Add Sphere"), document_(document), radius_(radius) {}

  bool doIt() override {  // also again, after undoIt
    if (radius_ <= 0.0) return false;
    document_.radii.push_back(radius_);
    return true;
  }
  bool undoIt() override {
    document_.radii.pop_back();
    return true;
  }

 private:
  Document& document_;
  double radius_;
};
//! [command]

void shortest() {
  //! [shortest]
  Document document;  // before the manager: the commands refer to the document
  const auto manager = vxUndo::newManager();
  vxUndo::Group* group = manager->newGroup("Add Spheres");
  group->perform(std::make_unique<AddSphere>(document, 1.0));
  group->perform(std::make_unique<AddSphere>(document, 2.0));
  manager->undo();  // both: a group is one step
  expect(document.radii.empty());
  expect(manager->redoName() == "Add Spheres");
  manager->redo();
  expect(document.radii.size() == 2);
  //! [shortest]
}

void failure() {
  //! [failure]
  Document document;
  const auto manager = vxUndo::newManager();
  vxUndo::Group* group = manager->newGroup("Add Spheres");
  const vxUtil::Error error = group->perform(std::make_unique<AddSphere>(document, -1.0));
  expect(error.code() == vxUndo::kCommandFailed);
  expect(group->isEmpty());  // the command is deleted
  expect(!manager->canUndo());
  //! [failure]
}

void steps() {
  //! [steps]
  Document document;
  const auto manager = vxUndo::newManager();
  const auto add = [&](const char* name, double radius, bool joins) {
    manager->newGroup(name, joins)->perform(std::make_unique<AddSphere>(document, radius));
  };
  add("Add", 1.0, false);
  add("Add", 2.0, false);
  add("Drag", 3.0, true);  // joins the step before
  expect(manager->numUndoSteps() == 2);
  manager->undo();
  expect(document.radii.size() == 1);
  add("Add", 4.0, false);  // new work: what was undone is gone
  expect(manager->numRedoSteps() == 0);
  //! [steps]
}

void saved() {
  //! [saved]
  Document document;
  const auto manager = vxUndo::newManager();
  int menuUpdates = 0;
  vxRTB::SignalClient client;
  manager->changed.connect(client, [&menuUpdates] { ++menuUpdates; });
  manager->newGroup("Add")->perform(std::make_unique<AddSphere>(document, 1.0));
  expect(!manager->isSaved());
  manager->markSaved();
  expect(manager->isSaved());
  manager->undo();
  expect(!manager->isSaved());
  manager->redo();
  expect(manager->isSaved());  // back at what was saved
  expect(menuUpdates > 0);     // names, what can be undone, whether saved
  //! [saved]
}

void limits() {
  //! [limits]
  Document document;
  const auto manager = vxUndo::newManager();
  manager->setLimits({.groups = 2, .bytes = 64 << 20});
  for (int i = 1; i <= 5; ++i)
    manager->newGroup("Add")->perform(std::make_unique<AddSphere>(document, i));
  expect(manager->numUndoSteps() == 2);  // the oldest steps are committed and dropped
  manager->undo(10);                     // as many as there are
  expect(document.radii.size() == 3);
  //! [limits]
}

//! [library]
// Modelling code: records into the current group, whoever has pushed it.
bool addSphere(Document& document, double radius) {
  vxUndo::Group* group = vxKilnBase::undoGetGroup();  // null: nothing is recorded now
  return group && !group->perform(std::make_unique<AddSphere>(document, radius));
}
//! [library]

void stack() {
  //! [stack]
  Document document;
  vxKilnBase::undoInit();  // once, at the start of the application
  MR_undo_push_new_group("Add Spheres", false);
  expect(addSphere(document, 1.0));
  expect(addSphere(document, 2.0));
  MR_undo_pop_group(true);  // drops the group if it stayed empty
  expect(!addSphere(document, 3.0));
  expect(vxUndo::manager()->undoName() == "Add Spheres");
  vxUndo::installManager(nullptr);  // before the document goes away
  //! [stack]
}

//! [brush]
struct Snapshot : vxKilnBase::StatefulUndoState {
  explicit Snapshot(double aRadius) : radius(aRadius) {}
  int getNumBytesUsed() const override { return sizeof(Snapshot); }
  double radius;
};

class Brush : public vxKilnBase::StatefulUndoCmd {
 public:
  using State = vx::Reference<vxKilnBase::StatefulUndoState>;
  Brush() : StatefulUndoCmd("Brush") {}
  void getState(State& state) override { state = new Snapshot(radius); }
  void setState(const State& state) override {
    radius = static_cast<const Snapshot&>(*state).radius;
  }
  double radius = 1.0;
};
//! [brush]

void snapshots() {
  //! [snapshots]
  vxKilnBase::undoInit();
  Brush brush;
  MR_undo_push_new_group("Widen Brush", false);
  brush.startChange();
  brush.radius = 5.0;
  brush.endChange();
  MR_undo_pop_group(true);
  vxUndo::manager()->undo();
  expect(brush.radius == 1.0);
  vxUndo::manager()->redo();
  expect(brush.radius == 5.0);
  vxUndo::installManager(nullptr);
  //! [snapshots]
}

//! [hide]
class Hide : public vxKilnBase::UndoCommand {
 public:
  Hide(vxUndo::Group* group, bool& isShown) : UndoCommand(group, "Hide"), isShown_(isShown) {
    declare(&isShown);  // this command must go when the flag goes
  }
  bool doIt() override { return show(false); }
  bool undoIt() override { return show(true); }

 private:
  bool show(bool on) {
    isShown_ = on;
    redrawPlanes(vxKilnBase::KilnRedraw::kModelPlanes);
    return true;
  }
  bool& isShown_;
};
//! [hide]

void forgetting() {
  //! [forget]
  const auto manager = vxUndo::newManager();
  auto isShown = std::make_unique<bool>(true);
  vxUndo::Group* group = manager->newGroup("Hide");
  group->perform(std::make_unique<Hide>(group, *isShown));
  expect(redraw_get_pending_planes() != 0);
  redraw_reset_pending();
  manager->forget(isShown.get());  // drops all steps that use the flag
  isShown.reset();
  expect(!manager->canUndo());
  //! [forget]
}

}  // namespace

int main() {
  shortest();
  failure();
  steps();
  saved();
  limits();
  stack();
  snapshots();
  forgetting();
}
