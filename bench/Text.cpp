#include "Text.h"

#include <algorithm>
#include <cstdio>
#include <ostream>

namespace bench {

namespace {

std::vector<std::size_t> widthsOf(const std::vector<Row>& rows) {
  std::vector<std::size_t> widths(rows.front().size(), 0);
  for (const Row& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  return widths;
}

void printRow(std::ostream& stream, const Row& row, const std::vector<std::size_t>& widths,
              std::size_t texts) {
  std::string line;
  for (std::size_t i = 0; i < row.size(); ++i) {
    const std::string padding(widths[i] - row[i].size(), ' ');
    const bool left = i == 0 || i + texts >= row.size();
    line += (i == 0 ? "" : "  ") + (left ? row[i] + padding : padding + row[i]);
  }
  stream << line.substr(0, line.find_last_not_of(' ') + 1) << '\n';
}

}  // namespace

std::string formatted(const char* format, double value) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, format, value);
  return buffer;
}

std::string timeText(double seconds) {
  constexpr const char* kUnits[] = {"ns", "us", "ms", "s"};
  double value = seconds * 1e9;
  std::size_t unit = 0;
  for (; value >= 999.5 && unit < 3; ++unit) value /= 1e3;
  const char* format = value < 9.995 ? "%.2f " : value < 99.95 ? "%.1f " : "%.0f ";
  return formatted(format, value) + kUnits[unit];
}

std::string ratioText(double value) {
  return formatted("%.2f", value);
}

void printRows(std::ostream& stream, const std::vector<Row>& rows, std::size_t texts) {
  const std::vector<std::size_t> widths = widthsOf(rows);
  for (const Row& row : rows) printRow(stream, row, widths, texts);
}

}  // namespace bench
