// What the user models: one surface.
#pragma once

#include <string>

#include <kilnbase/services/StatefulUndoCmd.h>

#include "examples/surface_fit/Surface.h"

namespace session {

/// The surface, whose changes can be undone. The undo manager must be installed for that.
class Model : public vxKilnBase::StatefulUndoCmd {
 public:
  explicit Model(const surfacefit::Surface& surface)
      : StatefulUndoCmd("Surface"), surface_(surface) {}

  const surfacefit::Surface& surface() const { return surface_; }

  /// Takes the surface as one undoable change, which the user knows as `what`.
  void change(const std::string& what, const surfacefit::Surface& surface);

  void getState(vx::Reference<vxKilnBase::StatefulUndoState>& state) override;
  void setState(const vx::Reference<vxKilnBase::StatefulUndoState>& state) override;

 private:
  surfacefit::Surface surface_;
};

}  // namespace session
