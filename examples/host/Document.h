// What the user models: a list of spheres, and the brush that makes them.
#pragma once

#include <vector>

#include <kilnbase/services/StatefulUndoCmd.h>
#include <kilnbase/services/UndoCommand.h>

namespace host {

/// The radii of the spheres, in the order in which they were made.
using Spheres = std::vector<double>;

/// Adds a sphere. The commands of the host perform themselves in the current undo group; without a
/// group they are refused.
bool addSphere(Spheres& spheres, double radius);

/// The radius of the next sphere. Changes stand between `startChange` and `endChange`.
class Brush : public vxKilnBase::StatefulUndoCmd {
 public:
  Brush() : StatefulUndoCmd("Brush") {}

  void getState(vx::Reference<vxKilnBase::StatefulUndoState>& state) override;
  void setState(const vx::Reference<vxKilnBase::StatefulUndoState>& state) override;

  double radius = 1.0;
};

}  // namespace host
