// A session of modelling, from the start of the application to its results.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "examples/session/CommandLine.h"
#include "examples/session/FitCache.h"
#include "examples/session/Model.h"
#include "examples/session/Summary.h"
#include "examples/session/Viewers.h"
#include "examples/surface_fit/Points.h"
#include "examples/surface_fit/Refinement.h"

namespace session {

/// The work in a project, which a host::Host has made.
class Session {
 public:
  /// Reads the points, starts the cache and the recorder, and connects to a running viewer. Throws
  /// surfacefit::InputError for points that cannot be used.
  explicit Session(const Options& options);

  /// Fits the points, or finds the fit in the cache. Every kept step becomes an undoable change of
  /// the model and a frame of the viewers. The user may stop this.
  void fit();
  /// Undoes three changes and redoes two, and throws std::runtime_error unless the surface is each
  /// time, bit for bit, the one that it was. Then redoes the third.
  void undoAndRedo();
  /// Writes all files, and completes the summary. Throws surfacefit::InputError.
  void save();

  /// The table of the steps.
  std::string stepTable() const;
  const Summary& summary() const { return summary_; }

 private:
  using Clock = std::chrono::steady_clock;

  TimedRefinement fitAnew();
  void keep(const surfacefit::Step& step);
  void findMesh();
  void makeMeshes();
  std::string pageText(const std::string& trace);
  void summarizeFit(double secondsOfFinding);
  void summarizeFrames();
  void summarizeMemory();

  Options options_;
  surfacefit::Measurement measurement_;
  surfacefit::Limits limits_;
  FitCache cache_;
  Recorder recorder_;
  FrameLink viewer_;
  bool hasViewer_;
  Model model_;
  std::vector<surfacefit::Surface> history_;  // the surfaces of the model, the first one first
  TimedRefinement fit_ = {};
  surfacefit::Mesh mesh_;  // of the best step
  Summary summary_;
};

}  // namespace session
