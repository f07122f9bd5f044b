#include <algorithm>
#include <cmath>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <sstream>

#include <kilnbase/linalg/DoubleLeastSqQR.h>
#include <kilnbase/linalg/DoubleSVDecomp.h>
#include <kilnbase/linalg/vecmath.h>
#include <kilnbase/util/mr_tolerance.h>

#include "examples/surface_fit/Fit.h"
#include "examples/surface_fit/InputError.h"
#include "examples/surface_fit/Mesh.h"
#include "examples/surface_fit/NetFile.h"
#include "examples/surface_fit/Page.h"
#include "examples/surface_fit/PointReader.h"
#include "examples/surface_fit/Raster.h"
#include "examples/surface_fit/Refinement.h"
#include "examples/surface_fit/Scatter.h"
#include "examples/surface_fit/Spline.h"
#include "tests/support/Matrices.h"
#include "tests/support/Reports.h"

namespace {

using namespace surfacefit;
using testing::HasSubstr;
using testing::ThrowsMessage;

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();

using Height = std::function<double(double, double)>;

std::vector<Point> scattered(int count, const Height& height) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> place(0.0, 10.0);
  std::vector<Point> points;
  while (static_cast<int>(points.size()) < count) {
    const double x = place(random);
    const double y = place(random);
    points.push_back({x, y, height(x, y)});
  }
  return points;
}

double wavy(double x, double y) {
  return 3.0 + std::sin(x) * std::cos(0.7 * y) + 0.1 * x;
}

// Uneven knots over [0, 10] and a random net.
Surface randomSurface(unsigned seed) {
  TnumberSequence xKnots = oneSpan({0.0, 10.0});
  TnumberSequence yKnots = oneSpan({0.0, 10.0});
  for (const double t : {0.5, 3.0, 3.25, 9.9}) xKnots.add(t, 1);
  yKnots.add(4.0, 2);
  return Surface(xKnots, yKnots, kilntest::randomMatrix(8, 6, seed));
}

Surface startFor(const std::vector<Point>& points, int spans) {
  const Range x = extent(points, &Point::x);
  const Range y = extent(points, &Point::y);
  Surface surface = Surface::flat(x, y, 1.0);
  for (int i = 1; i < spans; ++i)
    surface =
        surface.withXKnot(x.low + x.length() * i / spans).withYKnot(y.low + y.length() * i / spans);
  return surface;
}

TEST(Spline, BasisIsAPartitionOfUnityThatReproducesLines) {
  const TnumberSequence knots = randomSurface(1).xKnots();
  for (const double t : {0.0, 0.2, 0.5, 3.0, 3.1, 9.9, 9.95, 10.0}) {
    const BasisValues basis = basisAt(knots, t);
    double sum = 0.0;
    double line = 0.0;
    for (int k = 0; k < kOrder; ++k) {
      const int i = basis.first + k;
      const double greville = (knots(i + 1) + knots(i + 2) + knots(i + 3)) / 3.0;
      EXPECT_GE(basis.value[k], 0.0);
      sum += basis.value[k];
      line += greville * basis.value[k];
    }
    EXPECT_NEAR(1.0, sum, 8 * kEpsilon);
    EXPECT_NEAR(t, line, 80 * kEpsilon);
  }
}

TEST(Surface, StaysTheSameWhenKnotsAreInserted) {
  const Surface before = randomSurface(2);
  const Surface after =
      before.withXKnot(1.0).withXKnot(9.95).withXKnot(3.0).withYKnot(4.0).withYKnot(0.1);
  for (const Point& p : scattered(200, wavy))
    ASSERT_NEAR(before.heightAt(p.x, p.y), after.heightAt(p.x, p.y), 30 * kEpsilon);
}

TEST(Fit, ReproducesABicubicPolynomialFromAnyStart) {
  const auto bicubic = [](double x, double y) {
    return 2.0 - x + x * x * y - 0.01 * x * x * x * y * y * y;
  };
  const std::vector<Point> points = scattered(600, bicubic);
  const double scale = extent(points, &Point::z).length();
  for (const int spans : {1, 2, 4}) {
    const Fit fit = fitSurface(points, startFor(points, spans));
    EXPECT_EQ((spans + 3) * (spans + 3), fit.determined);
    EXPECT_EQ(600, fit.equations);
    EXPECT_LT(std::abs(fit.deviation.largest.value), 600 * kEpsilon * scale) << spans;
  }
}

TEST(Fit, AgreesWithThePivotedDecompositionOfTheWholeSystem) {
  const std::vector<Point> points = scattered(4000, wavy);
  const Surface start = randomSurface(3).withYKnot(7.0).withYKnot(6.5);
  DoubleGenMat design(4000, start.net().length());
  for (int k = 0; k < static_cast<int>(start.net().length()); ++k) {
    DoubleGenMat net(start.net().rows(), start.net().cols(), 0.0);
    net.dataVec()(k) = 1.0;
    const Surface basis(start.xKnots(), start.yKnots(), net);
    int row = 0;
    for (const Point& p : points) design(row++, k) = basis.heightAt(p.x, p.y);
  }
  const DoubleVec values = DoubleSVDecomp(design).singularValues();
  const DoubleVec expected = DoubleLeastSqQR(design).solve(heights(points));
  const Fit fit = fitSurface(points, start);
  EXPECT_EQ(fit.unknowns, fit.determined);
  const double bound = fit.unknowns * kEpsilon * values(0) / values(fit.unknowns - 1);
  EXPECT_LT((fit.surface.net().dataVec() - expected).vecLen(), bound * expected.vecLen());
}

// A plane measured around a hole and beside an empty corner: the fit is that plane, there too.
TEST(Fit, KeepsTheCoarserShapeWhereNothingIsMeasured) {
  const auto plane = [](double x, double y) { return 500.0 + 3.0 * x - 2.0 * y; };
  std::vector<Point> points = scattered(2000, plane);
  std::erase_if(points, [](const Point& p) {
    return std::hypot(p.x - 4.0, p.y - 4.0) < 2.5 || (p.x > 7.0 && p.y > 7.0);
  });
  points.push_back({10.0, 10.0, plane(10.0, 10.0)});
  kilntest::RecordedReports reports;
  TbaseReporter reporter("fit", 1);
  const Refinement refinement = refine(points, {1e-300, 500, 16, 6}, reporter);
  const Fit& last = refinement.steps.back().fit;
  EXPECT_LT(last.determined, last.unknowns);
  EXPECT_THAT(reports.takeAll(), testing::Contains(HasSubstr("the points determine")));
  for (const Point& p : {Point{4.0, 4.0, 0.0}, Point{9.0, 9.0, 0.0}, Point{8.0, 9.9, 0.0}})
    EXPECT_NEAR(plane(p.x, p.y), last.surface.heightAt(p.x, p.y), 1e-9);
}

struct StopCase {
  Limits limits;
  Stop stop;
};

TEST(Refinement, KeepsEveryLimitAndImprovesTheFit) {
  const std::vector<Point> points = scattered(3000, wavy);
  TbaseReporter silent;
  for (const auto& [limits, stop] : {StopCase{{1e-2, 900, 100, 20}, Stop::kWithinTolerance},
                                     StopCase{{1e-9, 200, 100, 20}, Stop::kMaxUnknowns},
                                     StopCase{{1e-9, 900, 11, 20}, Stop::kMaxSpans},
                                     StopCase{{1e-9, 900, 100, 3}, Stop::kMaxSteps}}) {
    const Refinement refinement = refine(points, limits, silent);
    EXPECT_EQ(stop, refinement.stop) << describe(stop, limits);
    EXPECT_LE(static_cast<int>(refinement.steps.size()), limits.maxSteps);
    double rms = std::numeric_limits<double>::infinity();
    for (const Step& step : refinement.steps) {
      EXPECT_LE(step.fit.unknowns, limits.maxUnknowns);
      EXPECT_LE(spanCount(step.fit.surface.xKnots()), limits.maxSpans);
      EXPECT_LE(spanCount(step.fit.surface.yKnots()), limits.maxSpans);
      EXPECT_LE(step.fit.deviation.rms, rms);
      rms = step.fit.deviation.rms;
      EXPECT_LE(std::abs(refinement.bestFit().deviation.largest.value),
                std::abs(step.fit.deviation.largest.value));
    }
  }
}

// A bump in one corner: later knots go there.
TEST(Refinement, PutsKnotsWhereTheDeviationIs) {
  const auto bump = [](double x, double y) {
    return std::exp(-4.0 * std::hypot(x - 2.0, y - 7.0));
  };
  TbaseReporter silent;
  const Refinement refinement = refine(scattered(4000, bump), {1e-6, 400, 100, 12}, silent);
  const Surface& surface = refinement.steps.back().fit.surface;
  const auto shortestSpan = [](const TnumberSequence& knots) {
    const DoubleVec steps = delta(knots.breakpoints());
    return knots.breakpoints()(minIndex(steps.slice(1, steps.length() - 1)));
  };
  EXPECT_NEAR(2.0, shortestSpan(surface.xKnots()), 1.0);
  EXPECT_NEAR(7.0, shortestSpan(surface.yKnots()), 1.0);
}

TEST(Refinement, StopsWhereHalvingGainsNothing) {
  std::vector<Point> points;
  for (int i = 0; i < 5; ++i)
    for (int j = 0; j < 5; ++j) points.push_back({1.0 * i, 1.0 * j, (i * 7 + j * 5) % 6 * 1.0});
  points.push_back({2.0, 2.0, 50.0});  // no surface passes both
  TbaseReporter silent;
  EXPECT_EQ(Stop::kNothingToSplit, refine(points, {1e-3, 900, 100, 50}, silent).stop);
}

TEST(Refinement, ReportsEveryStepAndStopsOnRequestWithWhatItHas) {
  const std::vector<Point> points = scattered(300, wavy);
  kilntest::RecordedReports reports;
  TbaseReporter reporter("surface_fit", 1);
  refine(points, {1e-9, 900, 100, 2}, reporter);
  EXPECT_THAT(
      reports.takeAll(),
      testing::ElementsAre(HasSubstr("surface_fit: Fitting iteration 1 (of max. 2). Rel."),
                           HasSubstr("surface_fit: Fitting iteration 2 (of max. 2). Rel.")));
  reports.asksToStop = true;
  const Refinement stopped = refine(points, {1e-9, 900, 100, 20}, reporter);
  EXPECT_EQ(Stop::kByUser, stopped.stop);
  EXPECT_EQ(1u, stopped.steps.size());
  EXPECT_THROW(fitSurface(points, startFor(points, 4), [] { return true; }), Interrupted);
}

TEST(Refinement, HandsOutEveryKeptStepTheSameEachTime) {
  const std::vector<Point> points = scattered(800, wavy);
  const Limits limits{1e-9, 300, 100, 9};
  TbaseReporter silent;
  std::vector<Surface> kept;
  const Refinement refinement =
      refine(points, limits, silent, [&kept](const Step& s) { kept.push_back(s.fit.surface); });
  EXPECT_TRUE(kept.back().identicalTo(refinement.bestFit().surface));
  std::size_t again = 0;
  refine(points, limits, silent,
         [&](const Step& s) { EXPECT_TRUE(s.fit.surface.identicalTo(kept[again++])); });
  EXPECT_EQ(kept.size(), again);
  EXPECT_FALSE(kept[0].identicalTo(kept[1]));
}

std::string netText(const Surface& surface) {
  std::ostringstream text;
  writeNet(surface, text);
  return text.str();
}

TEST(NetFile, ReadsBackExactlyWhatWasWritten) {
  const Surface surface = randomSurface(3);
  std::istringstream text(netText(surface));
  const Surface again = readNet(text);
  EXPECT_TRUE(again.net() == surface.net());
  EXPECT_TRUE(again.xKnots().data() == surface.xKnots().data());
  EXPECT_TRUE(again.yKnots().data() == surface.yKnots().data());
}

TEST(NetFile, RefusesWhatIsNoNet) {
  const std::string good = netText(randomSurface(4));
  std::vector<std::string> bad = {"", "# nothing", "12x1 [ 0 1 2 ]", "4000000000x4000000000 [ 1 ]"};
  for (std::size_t length = 0; length + 3 < good.size(); length += 37)
    bad.push_back(good.substr(0, length));
  bad.push_back(good.substr(0, good.size() - 3));
  const auto replaced = [&good](const std::string& from, const std::string& to) {
    std::string text = good;
    return text.replace(text.find(from), from.size(), to);
  };
  bad.push_back(replaced("3.25", "2.25"));  // descending knots
  bad.push_back(replaced("9.9", "nan"));
  bad.push_back(replaced("8x6", "6x8"));
  for (const std::string& text : bad) {
    std::istringstream stream(text);
    EXPECT_THROW(readNet(stream), InputError) << text.substr(0, 300);
  }
}

// Every text tells the points (1, -2.5, 30) and (4, 5, 0.5).
TEST(PointReader, ReadsWhatPeopleHave) {
  const struct {
    const char* text;
    std::vector<std::string> columns;
  } cases[] = {
      {"1 -2.5 30\n4 5 .5", {}},
      {"\xEF\xBB\xBF# head\r\n1\t-25e-1\t +30\r\n\n \t4 5 0.5 # note\n", {}},
      {"1, -2.5, 30\n4,5,0.5,\n", {}},
      {"1;-2,5;30\n4;5;0,5;;\n", {}},
      {"\"east\";\"north\";\"height\"\n\"1\";-2,5;30\n4;5;0,5\n", {}},
      {"id,Z,name,y,X\n7,30,\"a, b\",-2.5,1\n8,0.5,,5,4\n", {}},
      {"id h name n e\n7 30 a -2.5 1\n8 0.5 b 5 4\n", {"E", "n", "h"}},
      {"7 30 a -2.5 1\n8 0.5 b 5 4\n", {"5", "4", "2"}},
  };
  for (const auto& [text, columns] : cases) {
    std::istringstream stream(text);
    const std::vector<Point> points = readPoints(stream, {columns}).points;
    ASSERT_EQ(2u, points.size()) << text;
    EXPECT_EQ(1.0, points[0].x) << text;
    EXPECT_EQ(-2.5, points[0].y) << text;
    EXPECT_EQ(30.0, points[0].z) << text;
    EXPECT_EQ(4.0, points[1].x) << text;
    EXPECT_EQ(5.0, points[1].y) << text;
    EXPECT_EQ(0.5, points[1].z) << text;
  }
  std::istringstream places("# Source: A & B \r\n1 2\n3 4 # Source: no\n# Source:C\n");
  const auto [points, credit, hasHeights] = readPoints(places, {{}, false});
  EXPECT_EQ(4.0, points[1].y);
  EXPECT_EQ("A & B; C", credit);
  EXPECT_FALSE(hasHeights);
}

TEST(PointReader, NamesTheLineThatCannotBeRead) {
  const auto expectFailure = [](const std::string& content, const PointFormat& format,
                                const char* message) {
    std::istringstream text(content);
    EXPECT_THAT([&] { readPoints(text, format); }, ThrowsMessage<InputError>(HasSubstr(message)))
        << content;
  };
  for (const char* line :
       {"1 2", "1 2 3 4", "1 2 x", "1 2 3x", "1,,3", "1 2 nan", "inf 2 3", "1e999 2 3",
        "1 -1e200 3", "1 2 0x10", "+ 2 3", "1 2 --3", "a b c", "1,5 2,5 3,5", ";;;", "\"1 2 3"})
    expectFailure("1 2 3\n# comment\n" + std::string(line) + "\n4 5 6\n", {}, "line 3: ");
  expectFailure("1 2\n", {}, "line 1: fewer than three columns");
  expectFailure("1\n", {{}, false}, "line 1: fewer than two columns");
  expectFailure("1 2 3 4\n", {}, "line 1: more than three columns");
  expectFailure("a b c d\n1 2 3 4\n", {}, "line 1: more than three columns");
  expectFailure("1 2 3\n", {{"x", "2", "3"}}, "line 1: there is no heading with a column 'x'");
  expectFailure("1 2 3\n", {{"1", "0", "3"}}, "line 1: there is no heading with a column '0'");
  expectFailure("1 2 3\n", {{"1", "2", "4"}}, "line 1: no column 4, where z should be");
  expectFailure("a b c\n", {}, "no points");
}

TEST(Scatter, IsThatOfTheHeightsAboutTheirNeighbours) {
  std::mt19937 random(3);
  std::normal_distribution<double> noise(0.0, 0.5);
  std::vector<Point> points = scattered(5000, wavy);
  EXPECT_LT(scatterOf(points), 0.01);
  for (Point& p : points) p.z += noise(random);
  points[7].z = 1e6;
  EXPECT_NEAR(0.5, scatterOf(points), 0.05);
  for (Point& p : points) p.z = 3.0;
  EXPECT_EQ(get_crv_fit_tolerance(), suggestedTolerance(points));
}

// The triangles look up and cover everything but the hole, of which a rim may be covered.
TEST(Mesh, CoversThePlacesThatHavePoints) {
  std::vector<Point> points = scattered(4000, wavy);
  std::erase_if(points, [](const Point& p) { return p.x > 3.0 && p.x < 6.0; });
  const Surface surface = startFor(points, 16);
  const Mesh mesh = meshOf(surface, Coverage(points));
  double area = 0.0;
  for (const auto& [a, b, c] : mesh.triangles) {
    const Point& p = mesh.vertices[a];
    const Point& q = mesh.vertices[b];
    const Point& r = mesh.vertices[c];
    const double twice = (q.x - p.x) * (r.y - p.y) - (q.y - p.y) * (r.x - p.x);
    EXPECT_GT(twice, 0.0);
    EXPECT_FALSE(std::min({p.x, q.x, r.x}) > 3.8 && std::max({p.x, q.x, r.x}) < 5.2);
    area += 0.5 * twice;
  }
  EXPECT_NEAR(75.0, area, 5.0);

  const std::string text = meshText(mesh, MeshFormat::kObj);
  EXPECT_EQ(mesh.vertices.size() + mesh.triangles.size(), std::ranges::count(text, '\n'));
  EXPECT_EQ(84 + 50 * mesh.triangles.size(), meshText(mesh, MeshFormat::kStl).size());
  const std::string ply = meshText(mesh, MeshFormat::kPly);
  EXPECT_EQ(ply.find("end_header\n") + 11 + 24 * mesh.vertices.size() + 13 * mesh.triangles.size(),
            ply.size());
}

TEST(Raster, FindsAnEvenGridAndKeepsTheLargestOfACell) {
  std::vector<Point> grid;
  for (int j = 0; j < 4; ++j)
    for (int i = 0; i < 6; ++i) grid.push_back({10.0 + 0.1 * i, 2.0 * j, 10.0 * j + i});
  DoubleVec heights(24, 0.0);
  for (int k = 0; k < 24; ++k) heights(k) = grid[k].z;
  const Grid even = gridOf(grid);
  const Raster raster = rasterOf(even, worstPoints(even, grid, heights), heights);
  EXPECT_EQ(6, raster.grid.columns);
  EXPECT_EQ(4, raster.grid.rows);
  for (int k = 0; k < 24; ++k) EXPECT_EQ(heights(k), raster.values[k]);

  const std::vector<Point> loose = scattered(500, wavy);
  DoubleVec values(500, 1.0);
  values(123) = -8.0;
  const Grid cut = gridOf(loose);
  const Raster cells = rasterOf(cut, worstPoints(cut, loose, values), values);
  EXPECT_LT(cells.values.size(), 500u);
  EXPECT_THAT(cells.values, testing::Contains(-8.0));
}

std::string pageOf(const std::vector<Point>& points, const std::string& text) {
  TbaseReporter silent;
  const Limits limits{1e-9, 900, 100, 2};
  return pageText({{points, text}, refine(points, limits, silent), limits, text, text});
}

TEST(Page, ShowsTextAsTextWhateverCharactersItHas) {
  const std::string page = pageOf(scattered(100, wavy), "</script><img \"b\\\n");
  const std::string quoted = R"("\u003c/script>\u003cimg \u0022b\u005c\u000a")";
  for (const char* field : {"name:", "credit:", "unit:"})
    EXPECT_NE(std::string::npos, page.find(field + quoted)) << field;
  EXPECT_EQ(page.find("</script>"), page.rfind("</script>"));
  for (const char* unsafe : {"/*DATA*/", "http", "innerHTML", "outerHTML", "insertAdjacentHTML"})
    EXPECT_EQ(std::string::npos, page.find(unsafe)) << unsafe;
}

// Survey coordinates; two heights of one place, between which no surface is near enough.
TEST(Page, TellsPlacesExactly) {
  std::vector<Point> points = scattered(100, wavy);
  for (Point& p : points) p = {4412346.0 + p.x, 5401745.0 + p.y, p.z};
  for (const double z : {0.0, 99.0}) points.push_back({4412350.125, 5401750.0625, z});
  points.push_back({4412345.6, 5401744.2, 1.0});
  points.push_back({4412356.7, 5401755.3, 1.0});
  const std::string page = pageOf(points, "m");
  for (const char* text : {",x:4412350.125,y:5401750.0625}", "xKnots:[4412345.6,4412351.15,",
                           "measured:{x:[4412345.6,4412356.7],y:[5401744.2,5401755.3]"})
    EXPECT_NE(std::string::npos, page.find(text)) << text;
}

}  // namespace
