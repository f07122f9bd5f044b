#include "examples/surface_fit/PointReader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <iostream>
#include <limits>
#include <numeric>
#include <optional>
#include <string_view>
#include <system_error>

#include "examples/surface_fit/InputError.h"

namespace surfacefit {

namespace {

// Squares of coordinates stay finite below this size.
constexpr double kLargestNumber = 1e100;

constexpr std::string_view kBlanks = " \t\r\v\f";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr const char* kCoordinates[] = {"x", "y", "z"};

using Fields = std::vector<std::string_view>;

std::string_view trimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

std::string_view unquoted(std::string_view field) {
  if (field.size() < 2 || field.front() != '"' || field.back() != '"') return field;
  return trimmed(field.substr(1, field.size() - 2));
}

// The separator of a line; a blank stands for any number of blanks and tabs.
char separatorOf(std::string_view line) {
  for (const char separator : {';', ','})
    if (line.find(separator) != std::string_view::npos) return separator;
  return ' ';
}

// The length of the field at the start of `line`: to the separator, but not to one in quotes.
std::size_t fieldLength(std::string_view line, char separator) {
  const std::string_view stops = separator == ' ' ? kBlanks : std::string_view(&separator, 1);
  const bool quoted = line.starts_with('"');
  const std::size_t end = quoted ? line.find('"', 1) : 0;
  return std::min(line.find_first_of(stops, end == std::string_view::npos ? 0 : end), line.size());
}

// Empty fields at the end of a line, which separators without a number after them make, are
// dropped.
void split(std::string_view line, char separator, Fields& fields) {
  fields.clear();
  while (!line.empty()) {
    const std::size_t length = fieldLength(line, separator);
    fields.push_back(unquoted(trimmed(line.substr(0, length))));
    line = trimmed(line.substr(std::min(length + 1, line.size())));
  }
  while (!fields.empty() && fields.back().empty()) fields.pop_back();
}

// What a text means as a number; empty if it is none.
struct ParsedNumber {
  double value = 0.0;
  bool isNumber = false;
  bool isMeasurable = false;
};

ParsedNumber parse(std::string_view field, bool decimalComma) {
  std::string point(field);
  if (decimalComma) std::replace(point.begin(), point.end(), ',', '.');
  const char* begin = point.data() + (point.starts_with('+') ? 1 : 0);
  const char* const end = point.data() + point.size();
  ParsedNumber result;
  const auto [stop, error] = std::from_chars(begin, end, result.value);
  result.isNumber = error != std::errc::invalid_argument && stop == end;
  result.isMeasurable = error == std::errc() && std::abs(result.value) <= kLargestNumber;
  return result;
}

bool sameName(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [lower](char p, char q) { return lower(p) == lower(q); });
}

std::string inQuotes(std::string_view text) {
  return std::string(1, '\'').append(text).append("'");
}

// Makes points of lines, and remembers what the first lines tell.
class PointReader {
 public:
  explicit PointReader(const PointFormat& format) : format_(format) {}

  void read(std::string_view line);
  Measurement result() &&;

 private:
  [[noreturn]] void fail(const std::string& problem) const {
    throw InputError("line " + std::to_string(lineNumber_) + ": " + problem);
  }
  void noteCredit(std::string_view line);
  bool isHeading() const;
  void chooseColumns(bool heading);
  std::size_t column(const std::string& text, bool heading) const;
  std::optional<std::size_t> columnNamed(std::string_view name) const;
  void chooseNamedOrOnlyColumns(bool heading);
  double number(std::size_t coordinate) const;

  const PointFormat& format_;
  Measurement measurement_;
  int lineNumber_ = 0;
  Fields fields_;  // of the line at work
  bool decimalComma_ = false;
  std::vector<std::size_t> columns_;  // of x, y and perhaps z; empty before the first line
  std::size_t mostFields_ = std::numeric_limits<std::size_t>::max();
};

// Appends what a comment line "# Source: ..." tells.
void PointReader::noteCredit(std::string_view line) {
  constexpr std::string_view kHeading = "# Source:";
  if (!line.starts_with(kHeading)) return;
  const std::string_view credit = trimmed(line.substr(kHeading.size()));
  std::string& all = measurement_.credit;
  if (!credit.empty()) all.append(all.empty() ? "" : "; ").append(credit);
}

bool PointReader::isHeading() const {
  return std::none_of(fields_.begin(), fields_.end(), [this](std::string_view field) {
    return parse(field, decimalComma_).isNumber;
  });
}

std::optional<std::size_t> PointReader::columnNamed(std::string_view name) const {
  const auto found = std::find_if(fields_.begin(), fields_.end(),
                                  [name](std::string_view field) { return sameName(field, name); });
  if (found == fields_.end()) return std::nullopt;
  return found - fields_.begin();
}

std::size_t PointReader::column(const std::string& text, bool heading) const {
  if (heading)
    if (const auto named = columnNamed(text)) return *named;
  const char* const end = text.data() + text.size();
  std::size_t number = 0;
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end || number == 0)
    fail("there is no heading with a column " + inQuotes(text) +
         "; give numbers from 1 with --columns");
  return number - 1;
}

void PointReader::chooseNamedOrOnlyColumns(bool heading) {
  if (heading)
    for (const char* name : kCoordinates)
      if (const auto named = columnNamed(name)) columns_.push_back(*named);
  const std::size_t fewest = format_.needsHeights ? 3 : 2;
  if (columns_.size() >= fewest) return;
  if (fields_.size() < fewest)
    fail("fewer than " + std::string(fewest == 3 ? "three columns; write one point x y z a line"
                                                 : "two columns; write one place x y a line"));
  if (fields_.size() > 3)
    fail("more than three columns; tell which are x, y and z, as in --columns 1,2,3");
  mostFields_ = fields_.size();
  columns_.resize(mostFields_);
  std::iota(columns_.begin(), columns_.end(), 0);
}

void PointReader::chooseColumns(bool heading) {
  for (const std::string& text : format_.columns) columns_.push_back(column(text, heading));
  if (columns_.empty()) chooseNamedOrOnlyColumns(heading);
  measurement_.hasHeights = columns_.size() == 3;
}

double PointReader::number(std::size_t coordinate) const {
  const std::size_t index = columns_[coordinate];
  if (index >= fields_.size())
    fail("no column " + std::to_string(index + 1) + ", where " + kCoordinates[coordinate] +
         " should be");
  const std::string_view field = fields_[index];
  const ParsedNumber parsed = parse(field, decimalComma_);
  if (!parsed.isNumber)
    fail(inQuotes(field) + " is not a number; write x, y and z as in 148.9 0.0 411");
  if (!parsed.isMeasurable)
    fail(inQuotes(field) + " is not a height or place that can be measured; correct or remove it");
  return parsed.value;
}

void PointReader::read(std::string_view line) {
  if (++lineNumber_ == 1 && line.starts_with(kByteOrderMark))
    line.remove_prefix(kByteOrderMark.size());
  noteCredit(line);
  line = trimmed(line.substr(0, line.find('#')));
  if (line.empty()) return;

  const char separator = separatorOf(line);
  decimalComma_ = separator == ';';
  split(line, separator, fields_);
  if (columns_.empty()) {
    const bool heading = isHeading();
    chooseColumns(heading);
    if (heading) return;
  }
  if (fields_.size() > mostFields_)
    fail("more columns than the " + std::to_string(mostFields_) + " of the first line");
  Point point{number(0), number(1), 0.0};
  if (measurement_.hasHeights) point.z = number(2);
  measurement_.points.push_back(point);
}

Measurement PointReader::result() && {
  if (measurement_.points.empty())
    throw InputError("no points in it; write one point x y z a line");
  return std::move(measurement_);
}

Measurement readFrom(std::istream& text, const std::string& name, const PointFormat& format) {
  try {
    return readPoints(text, format);
  } catch (const InputError& error) {
    throw InputError(name + ", " + error.what());
  }
}

}  // namespace

Measurement readPoints(std::istream& text, const PointFormat& format) {
  PointReader reader(format);
  for (std::string line; std::getline(text, line);) reader.read(line);
  if (text.bad()) throw InputError("reading failed; is it a file of points?");
  return std::move(reader).result();
}

Measurement readPointFile(const std::filesystem::path& file, const PointFormat& format) {
  if (file == "-") return readFrom(std::cin, "standard input", format);
  std::ifstream text(file);
  if (!text)
    throw InputError("cannot open '" + file.string() +
                     "'; give the name of a file of measured points, x y z a line");
  return readFrom(text, file.string(), format);
}

}  // namespace surfacefit
