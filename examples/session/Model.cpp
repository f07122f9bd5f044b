#include "examples/session/Model.h"

#include <kilnbase/services/mr_undo.h>

namespace session {

namespace {

using surfacefit::Surface;
using vxKilnBase::StatefulUndoState;

struct SurfaceState : StatefulUndoState {
  explicit SurfaceState(const Surface& aSurface) : surface(aSurface) {}
  int getNumBytesUsed() const override {
    const std::size_t numbers = surface.net().length() + surface.xKnots().data().length() +
                                surface.yKnots().data().length();
    return static_cast<int>(sizeof(SurfaceState) + numbers * sizeof(double));
  }
  Surface surface;
};

}  // namespace

void Model::change(const std::string& what, const Surface& surface) {
  MR_undo_push_new_group(what.c_str(), false);
  startChange();
  surface_ = surface;
  endChange();
  MR_undo_pop_group(true);
}

void Model::getState(vx::Reference<StatefulUndoState>& state) {
  state = new SurfaceState(surface_);
}

void Model::setState(const vx::Reference<StatefulUndoState>& state) {
  surface_ = static_cast<const SurfaceState&>(*state).surface;
}

}  // namespace session
