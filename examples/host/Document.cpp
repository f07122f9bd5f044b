#include "examples/host/Document.h"

#include <memory>

namespace host {

namespace {

using vxKilnBase::KilnRedraw;
using vxKilnBase::StatefulUndoState;

class AddSphere : public vxKilnBase::UndoCommand {
 public:
  AddSphere(vxUndo::Group* group, Spheres& spheres, double radius)
      : UndoCommand(group, "Add Sphere"), spheres_(spheres), radius_(radius) {
    declare(&spheres);
  }

  bool doIt() override {
    spheres_.push_back(radius_);
    redrawPlanes(KilnRedraw::kModelPlanes);
    return true;
  }
  bool undoIt() override {
    spheres_.pop_back();
    redrawPlanes(KilnRedraw::kModelPlanes);
    return true;
  }

 private:
  Spheres& spheres_;
  double radius_;
};

struct BrushState : StatefulUndoState {
  explicit BrushState(double aRadius) : radius(aRadius) {}
  int getNumBytesUsed() const override { return sizeof(BrushState); }
  double radius;
};

}  // namespace

bool addSphere(Spheres& spheres, double radius) {
  vxUndo::Group* const group = vxKilnBase::undoGetGroup();
  return group && !group->perform(std::make_unique<AddSphere>(group, spheres, radius));
}

void Brush::getState(vx::Reference<StatefulUndoState>& state) {
  state = new BrushState(radius);
}

void Brush::setState(const vx::Reference<StatefulUndoState>& state) {
  radius = static_cast<const BrushState&>(*state).radius;
}

}  // namespace host
