#include "examples/surface_fit/Refinement.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <new>
#include <optional>

#include <kilnbase/linalg/vecmath.h>
#include <vx/Report.h>

#include "examples/surface_fit/Spline.h"

namespace surfacefit {

namespace {

// Up to this many spans each way all of them are halved.
constexpr int kUniformSpans = 8;

// Beyond it, one in so many.
constexpr std::size_t kSpansPerSplit = 4;

enum class Direction { kX, kY };

// One span of one direction and the points over it.
struct Span {
  Direction direction;
  double middle;
  double largestDeviation = 0.0;
  bool pointsBelow = false;  // below the middle, so that halving gives points to both halves
  bool pointsAbove = false;

  bool canBeHalved() const { return pointsBelow && pointsAbove; }
};

const TnumberSequence& knotsOf(const Surface& surface, Direction direction) {
  return direction == Direction::kX ? surface.xKnots() : surface.yKnots();
}

// The spans of one direction. The inner knots of a refined surface are simple, so the first basis
// function over a place has the index of its span.
std::vector<Span> spansOf(const Fit& fit, const std::vector<Point>& points, Direction direction) {
  const TnumberSequence& knots = knotsOf(fit.surface, direction);
  const auto coordinate = direction == Direction::kX ? &Point::x : &Point::y;
  std::vector<Span> spans;
  for (int i = kOrder - 1; i < basisSize(knots); ++i)
    spans.push_back({direction, 0.5 * (knots(i) + knots(i + 1))});
  const DoubleVec all = deviations(fit.surface, points);
  int row = 0;
  for (const Point& point : points) {
    Span& span = spans[basisAt(knots, point.*coordinate).first];
    span.largestDeviation = std::max(span.largestDeviation, std::abs(all(row++)));
    (point.*coordinate < span.middle ? span.pointsBelow : span.pointsAbove) = true;
  }
  return spans;
}

std::vector<Span> largestDeviationFirst(std::vector<Span> spans) {
  std::stable_sort(spans.begin(), spans.end(), [](const Span& a, const Span& b) {
    return a.largestDeviation > b.largestDeviation;
  });
  return spans;
}

// Of the spans of one direction those worth halving: the worst, one in kSpansPerSplit at most.
std::vector<Span> worstSpans(const std::vector<Span>& spans, double tolerance) {
  std::vector<Span> worst = largestDeviationFirst(spans);
  std::erase_if(worst, [tolerance](const Span& span) {
    return !span.canBeHalved() || span.largestDeviation <= tolerance;
  });
  worst.resize(std::min(worst.size(), (spans.size() + kSpansPerSplit - 1) / kSpansPerSplit));
  return worst;
}

// Which spans to halve next, and, where there are none, what forbids it.
struct Plan {
  std::vector<Span> halved;
  Stop obstacle = Stop::kNothingToSplit;
};

// As many of the candidates, from the first on, as the limits allow.
Plan withinLimits(const std::vector<Span>& candidates, const Surface& surface,
                  const Limits& limits) {
  Plan plan;
  int xSpans = spanCount(surface.xKnots());
  int ySpans = spanCount(surface.yKnots());
  constexpr int kExtra = kOrder - 1;  // a spline has this many more coefficients than spans
  for (const Span& span : candidates) {
    const int moreX = xSpans + (span.direction == Direction::kX ? 1 : 0);
    const int moreY = ySpans + (span.direction == Direction::kY ? 1 : 0);
    if (std::max(moreX, moreY) > limits.maxSpans) {
      plan.obstacle = Stop::kMaxSpans;
    } else if ((moreX + kExtra) * (moreY + kExtra) > limits.maxUnknowns) {
      plan.obstacle = Stop::kMaxUnknowns;
    } else {
      plan.halved.push_back(span);
      xSpans = moreX;
      ySpans = moreY;
    }
  }
  return plan;
}

std::vector<Span> joined(std::vector<Span> a, const std::vector<Span>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

Plan planRefinement(const Fit& fit, const std::vector<Point>& points, const Limits& limits) {
  const std::vector<Span> xSpans = spansOf(fit, points, Direction::kX);
  const std::vector<Span> ySpans = spansOf(fit, points, Direction::kY);
  if (std::max(xSpans.size(), ySpans.size()) < kUniformSpans) {
    std::vector<Span> all = joined(xSpans, ySpans);
    std::erase_if(all, [](const Span& span) { return !span.canBeHalved(); });
    Plan plan = withinLimits(all, fit.surface, limits);
    if (plan.halved.size() == all.size()) return plan;
  }
  const std::vector<Span> worst =
      joined(worstSpans(xSpans, limits.tolerance), worstSpans(ySpans, limits.tolerance));
  return withinLimits(largestDeviationFirst(worst), fit.surface, limits);
}

Surface refined(Surface surface, const Plan& plan) {
  for (const Span& span : plan.halved)
    surface = span.direction == Direction::kX ? surface.withXKnot(span.middle)
                                              : surface.withYKnot(span.middle);
  return surface;
}

Step timedFit(const std::vector<Point>& points, const Surface& start,
              const std::function<bool()>& interrupted) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point begin = Clock::now();
  const Fit fit = fitSurface(points, start, interrupted);
  return {fit, std::chrono::duration<double>(Clock::now() - begin).count()};
}

double size(const Fit& fit) {
  return std::abs(fit.deviation.largest.value);
}

void report(const Fit& fit, int step, const Limits& limits, TbaseReporter& reporter) {
  const Deviation& largest = fit.deviation.largest;
  reporter.toleranceReport(step, limits.maxSteps, largest.x, largest.y,
                           size(fit) / limits.tolerance);
  if (fit.determined < fit.unknowns && reporter.loud())
    rptUser(
        "Step %d: the points determine %d of %d coefficients well enough; the other %d stay near "
        "the shape found so far.",
        step, fit.determined, fit.unknowns, fit.unknowns - fit.determined);
}

std::optional<Stop> reasonToStop(const Refinement& refinement, const Limits& limits,
                                 TbaseReporter& reporter) {
  if (size(refinement.steps.back().fit) <= limits.tolerance) return Stop::kWithinTolerance;
  if (static_cast<int>(refinement.steps.size()) >= limits.maxSteps) return Stop::kMaxSteps;
  if (reporter.quit() != 0) return Stop::kByUser;
  return std::nullopt;
}

// Adds step after step to `result` and tells it why the last one is the last.
void takeSteps(const std::vector<Point>& points, const Limits& limits, TbaseReporter& reporter,
               const KeptStep& kept, Refinement& result) {
  Surface start =
      Surface::flat(extent(points, &Point::x), extent(points, &Point::y), mean(heights(points)));
  std::function<bool()> interrupted;  // the first step is always finished
  while (true) {
    result.steps.push_back(timedFit(points, start, interrupted));
    interrupted = [&reporter] { return reporter.quit() != 0; };
    const Fit& fit = result.steps.back().fit;
    if (size(fit) < size(result.bestFit())) result.best = result.steps.size() - 1;
    if (kept && result.best == result.steps.size() - 1) kept(result.steps.back());
    report(fit, static_cast<int>(result.steps.size()), limits, reporter);

    const std::optional<Stop> stop = reasonToStop(result, limits, reporter);
    const Plan plan = stop ? Plan{{}, *stop} : planRefinement(fit, points, limits);
    if (plan.halved.empty()) {
      result.stop = plan.obstacle;
      return;
    }
    start = refined(fit.surface, plan);
  }
}

}  // namespace

Refinement refine(const std::vector<Point>& points, const Limits& limits, TbaseReporter& reporter,
                  const KeptStep& kept) {
  Refinement result{{}, 0, Stop::kOutOfMemory};
  try {
    takeSteps(points, limits, reporter, kept, result);
  } catch (const Interrupted&) {
    result.stop = Stop::kByUser;
  } catch (const std::bad_alloc&) {
    if (result.steps.empty()) throw;
  }
  return result;
}

std::string describe(Stop stop, const Limits& limits) {
  switch (stop) {
    case Stop::kWithinTolerance:
      return "The largest deviation is within the tolerance.";
    case Stop::kMaxUnknowns:
      return "Stopped by the limit of " + std::to_string(limits.maxUnknowns) +
             " unknowns (--max-unknowns).";
    case Stop::kMaxSpans:
      return "Stopped by the limit of " + std::to_string(limits.maxSpans) +
             " spans in a direction (--max-spans).";
    case Stop::kMaxSteps:
      return "Stopped by the limit of " + std::to_string(limits.maxSteps) + " steps (--max-steps).";
    case Stop::kNothingToSplit:
      return "Stopped because halving any span further would leave a half without points.";
    case Stop::kByUser:
      return "Stopped by the user; the best fit so far is kept.";
    case Stop::kOutOfMemory:
      return "Stopped because there is not enough memory for another step; the best fit so far is "
             "kept.";
  }
  return "";
}

}  // namespace surfacefit
