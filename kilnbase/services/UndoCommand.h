// The base of the application's undo commands.
#pragma once

#include <kilnbase/export.h>
#include <kilnbase/services/mr_undo.h>
#include <vx/Undo.h>

namespace vxKilnBase {

/// The sets of planes that a command can ask to redraw; see redraw.h. Other values ask for nothing.
enum class KilnRedraw : int {
  kNone = 0,
  kActivePlanes = 1,
  kModelPlanes = 2,
  kTemplatePlanes = 3,
  kWindowPlanes = 4
};

/// A command that knows its group and asks for redraws.
///
///     struct Show : vxKilnBase::UndoCommand {
///       explicit Show(vxUndo::Group* group) : UndoCommand(group, "Show") { declare(&shown); }
///       bool doIt() override { return set(true); }
///       bool undoIt() override { return set(false); }
///       bool set(bool on) {
///         shown = on;
///         redrawPlanes(vxKilnBase::KilnRedraw::kModelPlanes);
///         return true;
///       }
///       bool shown = false;
///     };
///     if (vxUndo::Group* group = vxKilnBase::undoGetGroup()) {
///       group->perform(std::make_unique<Show>(group));
///     }
class KILNBASE_API UndoCommand : public vxUndo::Command {
 public:
  /// The command does not add itself to `group`, which is null while nothing is recorded.
  UndoCommand(vxUndo::Group* group, const char* name);
  ~UndoCommand() override;

  /// Notes requests; the application redraws when the step is over.
  void redrawPlanes(KilnRedraw planes);
  /// Asks for a redraw of everything.
  void setRedrawPending();

 protected:
  /// Declares to the group that the command uses `data`. Nothing happens when either is null.
  void declare(const void* data);

 private:
  vxUndo::Group* group_;
};

}  // namespace vxKilnBase
