#include <kilnbase/services/UndoCommand.h>
#include <kilnbase/services/redraw.h>

namespace vxKilnBase {

UndoCommand::UndoCommand(vxUndo::Group* group, const char* name) : Command(name), group_(group) {}

UndoCommand::~UndoCommand() = default;

void UndoCommand::declare(const void* data) {
  if (data != nullptr && group_ != nullptr) group_->declare(data);
}

void UndoCommand::redrawPlanes(KilnRedraw planes) {
  switch (planes) {
    case KilnRedraw::kActivePlanes:
      return redraw_add_active_planes();
    case KilnRedraw::kModelPlanes:
      return redraw_add_model_planes();
    case KilnRedraw::kTemplatePlanes:
      return redraw_add_template_planes();
    case KilnRedraw::kWindowPlanes:
      return redraw_add_window_planes();
    case KilnRedraw::kNone:
      return;
  }
}

void UndoCommand::setRedrawPending() {
  redraw_add_all();
}

}  // namespace vxKilnBase
