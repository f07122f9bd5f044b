// What a viewer sees of a step.
#pragma once

#include <string>
#include <vector>

#include <kilnbase/net/KilnDebugDrawFrame.h>

#include "examples/surface_fit/Fit.h"
#include "examples/surface_fit/Points.h"

namespace session {

/// A frame of a fit: the points, the surface, its control net as polylines, lines from the surface
/// to the points that deviate most, and labels at the highest, the lowest and the worst point.
/// Coordinates are those of the points.
class StepDrawing {
 public:
  StepDrawing(const std::string& name, const surfacefit::Fit& fit,
              const std::vector<surfacefit::Point>& points, const std::string& unit);
  ~StepDrawing() { frame_.clear(true); }
  StepDrawing(const StepDrawing&) = delete;
  StepDrawing& operator=(const StepDrawing&) = delete;

  const vxKilnBase::KilnDebugDrawFrame& frame() const { return frame_; }

 private:
  void addDeviations(const surfacefit::Fit& fit, const std::vector<surfacefit::Point>& points);
  void addNet(const vxgk::Surface& surface);

  vxKilnBase::KilnDebugDrawFrame frame_;  // owns its objects
};

}  // namespace session
