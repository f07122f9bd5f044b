#include "examples/session/Session.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <sstream>
#include <stdexcept>

#include <kilnbase/linalg/vecmath.h>
#include <kilnbase/services/MorlaTrace.h>
#include <kilnbase/util/db_filename.h>
#include <kilnbase/util/mr_tolerance.h>
#include <vx/Report.h>
#include <vx/Undo.h>

#include "examples/host/ProjectFiles.h"
#include "examples/session/Drawing.h"
#include "examples/session/SessionPage.h"
#include "examples/session/System.h"
#include "examples/surface_fit/NetFile.h"
#include "examples/surface_fit/NumberText.h"
#include "examples/surface_fit/OutputFiles.h"
#include "examples/surface_fit/Page.h"
#include "examples/surface_fit/PointReader.h"
#include "examples/surface_fit/Scatter.h"
#include "examples/surface_fit/Spline.h"
#include "examples/surface_fit/StepTable.h"

namespace session {

namespace {

using host::projectFile;
using surfacefit::Coverage;
using surfacefit::Point;
using surfacefit::spanCount;
using surfacefit::Step;
using surfacefit::Surface;
using vxString::CString;

constexpr int kMostUnknowns = 20000;
const vxUtil::Interval kViewerLimit(0.5);

surfacefit::Measurement readMeasurement(const Options& options) {
  surfacefit::Measurement measurement =
      surfacefit::readPointFile(options.points, {options.columns});
  requireFittable(measurement.points);
  return measurement;
}

surfacefit::Limits limitsFor(const Options& options, const std::vector<Point>& points) {
  return {options.tolerance ? *options.tolerance : surfacefit::suggestedTolerance(points),
          kMostUnknowns, get_max_surf_spans(), options.maxSteps};
}

Surface flatSurface(const std::vector<Point>& points) {
  return Surface::flat(surfacefit::extent(points, &Point::x), surfacefit::extent(points, &Point::y),
                       mean(surfacefit::heights(points)));
}

std::string spansOf(const Surface& surface) {
  return std::to_string(spanCount(surface.xKnots())) + " x " +
         std::to_string(spanCount(surface.yKnots())) + " spans";
}

// The indices of the steps whose largest deviation was the smallest so far.
std::vector<std::size_t> keptSteps(const surfacefit::Refinement& refinement) {
  std::vector<std::size_t> kept;
  double smallest = HUGE_VAL;
  for (std::size_t i = 0; i < refinement.steps.size(); ++i) {
    const double largest = std::abs(refinement.steps[i].fit.deviation.largest.value);
    if (largest >= smallest) continue;
    smallest = largest;
    kept.push_back(i);
  }
  return kept;
}

std::string nameOf(const std::filesystem::path& points) {
  return points == "-" ? "standard input" : points.filename().string();
}

std::string traceText() {
  std::string text;
  MorlaTrace::dump(
      [](void* lines, const char* line) {
        const std::string_view view(line);
        static_cast<std::string*>(lines)->append(view.substr(0, view.find('\n'))).append("\n");
      },
      &text);
  return text;
}

std::string netText(const Surface& surface) {
  std::ostringstream text;
  writeNet(surface, text);
  return text.str();
}

void require(const vxUtil::Error& error) {
  if (error) throw std::runtime_error(error.message().c_str());
}

void requireSame(const Surface& surface, const Surface& before, const char* what) {
  if (!surface.identicalTo(before))
    throw std::runtime_error(std::string("after the ") + what + " the surface is another one");
}

}  // namespace

Session::Session(const Options& options)
    : options_(options),
      measurement_(readMeasurement(options)),
      limits_(limitsFor(options, measurement_.points)),
      cache_(projectFile("cache", MISC_DATA), measurement_.points, limits_),
      recorder_(projectFile("session.kilndraw", MISC_DATA)),
      hasViewer_(viewer_.connect(options.viewerPort, kViewerLimit)),
      model_(flatSurface(measurement_.points)),
      history_{model_.surface()} {
  MorlaTrace::trace1(MorlaTrace::SPF, "%zu points of %s", measurement_.points.size(),
                     nameOf(options.points).c_str());
}

void Session::keep(const Step& step) {
  const surfacefit::DeviationSummary& deviation = step.fit.deviation;
  const std::string what = "Refine to " + spansOf(step.fit.surface);
  model_.change(what, step.fit.surface);
  history_.push_back(step.fit.surface);
  MorlaTrace::trace1(MorlaTrace::SPF, "%s: rms %g, largest %g", what.c_str(), deviation.rms,
                     deviation.largest.value);
  const CString name = CString::format("Step %zu: %s, rms %s, largest %s", history_.size() - 1,
                                       spansOf(step.fit.surface).c_str(),
                                       lengthText(deviation.rms, options_.unit).c_str(),
                                       lengthText(deviation.largest.value, options_.unit).c_str());
  const StepDrawing drawing(name.c_str(), step.fit, measurement_.points, options_.unit);
  viewer_.send(drawing.frame());
  recorder_.send(drawing.frame());
}

// The time of the fit is without that of undo and of the viewers.
TimedRefinement Session::fitAnew() {
  TbaseReporter reporter("session", errorIsTerminal() ? 1 : 0);
  Clock::duration aside{};
  const auto keepAside = [this, &aside](const Step& step) {
    const Clock::time_point begin = Clock::now();
    keep(step);
    aside += Clock::now() - begin;
  };
  const Clock::time_point begin = Clock::now();
  surfacefit::Refinement refinement =
      surfacefit::refine(measurement_.points, limits_, reporter, keepAside);
  const std::chrono::duration<double> seconds = Clock::now() - begin - aside;
  rptClearStatus();
  return {std::move(refinement), seconds.count()};
}

void Session::fit() {
  const Clock::time_point begin = Clock::now();
  auto found = cache_.find();
  const std::chrono::duration<double> finding = Clock::now() - begin;
  if (found) {
    fit_ = std::move(*found);
    for (const std::size_t i : keptSteps(fit_.refinement)) keep(fit_.refinement.steps[i]);
    findMesh();
    summarizeFit(finding.count());
  } else {
    fit_ = fitAnew();
    makeMeshes();
    summarizeFit(0.0);
  }
}

void Session::findMesh() {
  if (auto mesh = cache_.findMesh(fit_.refinement.best))
    mesh_ = std::move(*mesh);
  else
    mesh_ = meshOf(fit_.refinement.bestFit().surface, Coverage(measurement_.points));
}

// The best step is the last of the kept ones.
void Session::makeMeshes() {
  const Coverage coverage(measurement_.points);
  std::map<std::size_t, surfacefit::Mesh> meshes;
  for (const std::size_t i : keptSteps(fit_.refinement))
    meshes[i] = meshOf(fit_.refinement.steps[i].fit.surface, coverage);
  cache_.add(fit_, meshes);
  mesh_ = std::move(meshes.rbegin()->second);
}

void Session::summarizeFit(double secondsOfFinding) {
  const surfacefit::Fit& best = fit_.refinement.bestFit();
  const double largest = best.deviation.largest.value;
  summary_.add("input",
               counted(measurement_.points.size(), "point") + " of " + nameOf(options_.points));
  summary_.add("tolerance", surfacefit::numberText(limits_.tolerance) + " " + options_.unit +
                                (options_.tolerance ? "" : ", from the scatter of the points"));
  MorlaTrace::trace1(MorlaTrace::SPF, "%zu steps, fitted in %g s, found in %g s",
                     fit_.refinement.steps.size(), fit_.seconds, secondsOfFinding);
  const std::string steps = counted(fit_.refinement.steps.size(), "step") + ", " +
                            std::to_string(history_.size() - 1) + " kept, ";
  if (secondsOfFinding > 0.0)
    summary_.add("fit",
                 steps + "found in the cache in " + secondsText(secondsOfFinding) + ": " +
                     CString::format("%.0f", fit_.seconds / secondsOfFinding).c_str() +
                     " times as fast as fitting, which took " + secondsText(fit_.seconds),
                 Tone::kGood);
  else
    summary_.add("fit", steps + "fitted in " + secondsText(fit_.seconds));
  summary_.add("deviation",
               "rms " + lengthText(best.deviation.rms, options_.unit) + ", largest " +
                   lengthText(largest, options_.unit),
               std::abs(largest) <= limits_.tolerance ? Tone::kGood : Tone::kTrouble);
  summary_.add("", describe(fit_.refinement.stop, limits_));
}

void Session::undoAndRedo() {
  vxUndo::Manager& manager = *vxUndo::manager();
  const int changes = static_cast<int>(history_.size()) - 1;
  const int undone = std::min(3, changes);
  const int redone = std::min(2, undone);
  require(manager.undo(undone));
  requireSame(model_.surface(), history_[changes - undone], "undo");
  MorlaTrace::trace1(MorlaTrace::Undo, "undid %d, to %s", undone,
                     spansOf(model_.surface()).c_str());
  require(manager.redo(redone));
  requireSame(model_.surface(), history_[changes - undone + redone], "redo");
  MorlaTrace::trace1(MorlaTrace::Undo, "redid %d, to %s", redone,
                     spansOf(model_.surface()).c_str());
  summary_.add("undo",
               CString::format("%d of %d changes undone, %d redone: each time the surface that it "
                               "was (%s), bit for bit",
                               undone, changes, redone, spansOf(model_.surface()).c_str())
                   .c_str(),
               Tone::kGood);
  if (redone < undone) require(manager.redo(undone - redone));
}

std::string Session::stepTable() const {
  return surfacefit::stepTable(fit_.refinement, limits_, options_.unit);
}

std::string Session::pageText(const std::string& trace) {
  const std::string name = nameOf(options_.points);
  const std::string view = recorder_.finish() ? recorder_.exportPage() : "";
  const surfacefit::Fit& best = fit_.refinement.bestFit();
  const std::string facts = counted(measurement_.points.size(), "point") + ", " +
                            spansOf(best.surface) + ", largest deviation " +
                            lengthText(best.deviation.largest.value, options_.unit) + ". " +
                            (fit_.refinement.steps.size() > 1
                                 ? counted(history_.size() - 1, "frame") + ", a kept step each."
                                 : "");
  return sessionPage(
      {"A session on " + name, facts, view,
       surfacefit::pageText({measurement_, fit_.refinement, limits_, options_.unit, name}), trace});
}

void Session::save() {
  const Surface& surface = model_.surface();
  const std::filesystem::path page = projectFile("session.html", PROJ_DATA);
  const std::filesystem::path net =
      projectFile(CString::format("net.%04zu", history_.size() - 1).c_str(), WIRE_DATA);
  const std::string mesh = meshText(mesh_, surfacefit::MeshFormat::kPly);
  MorlaTrace::trace1(MorlaTrace::UI, "saving %s", spansOf(surface).c_str());
  const std::string trace = traceText();
  surfacefit::writeFiles({{page, pageText(trace)},
                          {projectFile("trace.txt", TEXT_DATA), trace},
                          {net, netText(surface)},
                          {projectFile("surface.ply", SLA_DATA), mesh}});
  vxUndo::manager()->markSaved();
  summarizeFrames();
  summarizeMemory();
  summary_.add("page", page.generic_string());
}

void Session::summarizeFrames() {
  const std::string port = std::to_string(options_.viewerPort);
  if (!hasViewer_)
    summary_.add("viewer", "none on port " + port);
  else
    summary_.add("viewer",
                 counted(viewer_.framesSent(), "frame") + " to the one on port " + port +
                     (viewer_.hasFailed() ? ", which then went away" : ""),
                 viewer_.hasFailed() ? Tone::kTrouble : Tone::kGood);
  if (recorder_.problem().empty())
    summary_.add("recording", counted(recorder_.framesSent(), "frame") + ": " +
                                  projectFile("session.kilndraw", MISC_DATA).generic_string());
  else
    summary_.add("recording", recorder_.problem(), Tone::kTrouble);
}

void Session::summarizeMemory() {
  const std::string folder = projectFile("cache", MISC_DATA).generic_string();
  if (!cache_.problem().empty())
    summary_.add("cache", "none: " + cache_.problem(), Tone::kTrouble);
  else
    summary_.add(
        "cache",
        folder + ": " + counted(cache_.hits(), "hit") + ", " + counted(cache_.additions(), "file") +
            " added" +
            (cache_.refusals() > 0 ? ", " + std::to_string(cache_.refusals()) + " damaged" : ""));
  constexpr double kMegabyte = 1 << 20;
  const double undo = static_cast<double>(vxUndo::manager()->numBytesUsed());
  const double peak = static_cast<double>(peakMemory());
  summary_.add("memory", CString::format("%.0f MB at most, %.1f MB of them for undo",
                                         peak / kMegabyte, undo / kMegabyte)
                             .c_str());
}

}  // namespace session
