#include "examples/surface_fit/Points.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "examples/surface_fit/InputError.h"

namespace surfacefit {

namespace {

// A bicubic patch has 4 by 4 coefficients.
constexpr std::size_t kFewestPoints = 16;

// So that a design matrix of one patch can still be counted by int.
constexpr std::size_t kMostPoints = 100'000'000;

// Points nearer to a line than this part of their spread are taken to lie on it: what is left is
// the rounding of the coordinates as they were written.
constexpr double kLineTolerance = 1e-9;

// Squares of coordinates stay finite below this size.
constexpr double kLargestNumber = 1e100;

constexpr std::string_view kBlanks = " \t\r\v\f";

[[noreturn]] void failAt(int line, const std::string& problem) {
  throw InputError("line " + std::to_string(line) + ": " + problem);
}

std::string_view withoutComment(std::string_view line) {
  return line.substr(0, line.find('#'));
}

// Appends what a comment line "# Source: ..." tells.
void noteCredit(std::string_view line, std::string& credit) {
  constexpr std::string_view kHeading = "# Source:";
  if (!line.starts_with(kHeading)) return;
  line.remove_prefix(std::min(line.find_first_not_of(kBlanks, kHeading.size()), line.size()));
  line = line.substr(0, line.find_last_not_of(kBlanks) + 1);
  if (!line.empty()) credit.append(credit.empty() ? "" : "; ").append(line);
}

// Takes the first word off the line; an empty one at its end.
std::string_view takeWord(std::string_view& line) {
  line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
  const std::string_view word = line.substr(0, line.find_first_of(kBlanks));
  line.remove_prefix(word.size());
  return word;
}

double parseNumber(std::string_view word, int line) {
  const std::string quoted = std::string(1, '\'').append(word).append("'");
  if (word.starts_with('+')) word.remove_prefix(1);
  double number = 0.0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  if (error == std::errc::invalid_argument || end != word.data() + word.size())
    failAt(line, quoted + " is not a number; write x, y and z as in 148.9 0.0 411");
  if (error != std::errc() || !(std::abs(number) <= kLargestNumber))
    failAt(line, quoted + " is not a height or place that can be measured; correct or remove it");
  return number;
}

std::optional<Point> parseLine(std::string_view line, int lineNumber) {
  line = withoutComment(line);
  double numbers[3];
  int count = 0;
  for (std::string_view word = takeWord(line); !word.empty(); word = takeWord(line)) {
    if (count == 3) failAt(lineNumber, "more than three numbers; write one point x y z a line");
    numbers[count++] = parseNumber(word, lineNumber);
  }
  if (count == 0) return std::nullopt;
  if (count < 3) failAt(lineNumber, "fewer than three numbers; write one point x y z a line");
  return Point{numbers[0], numbers[1], numbers[2]};
}

// The point farthest from `from` in x and y.
const Point& farthest(const std::vector<Point>& points, const Point& from) {
  const auto distance = [&from](const Point& p) { return std::hypot(p.x - from.x, p.y - from.y); };
  return *std::max_element(
      points.begin(), points.end(),
      [&distance](const Point& p, const Point& q) { return distance(p) < distance(q); });
}

// Whether all points lie on the line through the two that are farthest apart, but for rounding.
bool lieOnOneLine(const std::vector<Point>& points) {
  const Point& start = farthest(points, points.front());
  const Point& end = farthest(points, start);
  const double dx = end.x - start.x;
  const double dy = end.y - start.y;
  const double length = std::hypot(dx, dy);
  return std::all_of(points.begin(), points.end(), [&](const Point& p) {
    const double twiceArea = dx * (p.y - start.y) - dy * (p.x - start.x);
    return std::abs(twiceArea) <= kLineTolerance * length * length;
  });
}

}  // namespace

Measurement readPoints(std::istream& text) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  Measurement result;
  std::string line;
  for (int lineNumber = 1; std::getline(text, line); ++lineNumber) {
    if (lineNumber == 1 && line.starts_with(kByteOrderMark)) line.erase(0, kByteOrderMark.size());
    if (const auto point = parseLine(line, lineNumber)) result.points.push_back(*point);
    noteCredit(line, result.credit);
  }
  if (text.bad()) throw InputError("reading failed; is it a file of points?");
  if (result.points.empty()) throw InputError("no points in it; write one point x y z a line");
  return result;
}

Measurement readPointFile(const std::filesystem::path& file) {
  std::ifstream text(file);
  if (!text)
    throw InputError("cannot open '" + file.string() +
                     "'; give the name of a file of measured points, x y z a line");
  try {
    return readPoints(text);
  } catch (const InputError& error) {
    throw InputError(file.string() + ", " + error.what());
  }
}

Range extent(const std::vector<Point>& points, double Point::*coordinate) {
  Range range{points.front().*coordinate, points.front().*coordinate};
  for (const Point& point : points) {
    range.low = std::min(range.low, point.*coordinate);
    range.high = std::max(range.high, point.*coordinate);
  }
  return range;
}

void requireFittable(const std::vector<Point>& points) {
  if (points.size() < kFewestPoints)
    throw InputError("too few points: " + std::to_string(points.size()) +
                     ", but a bicubic surface" + " needs at least " +
                     std::to_string(kFewestPoints) + "; add measurements");
  if (points.size() > kMostPoints)
    throw InputError("more than " + std::to_string(kMostPoints) + " points; thin them out");
  if (lieOnOneLine(points))
    throw InputError(
        "the points lie on one line in x and y; a surface needs points that cover an area");
}

}  // namespace surfacefit
