// Numbers as the tables write them, and the tables' lines.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace bench {

/// The cells of a line.
using Row = std::vector<std::string>;

/// A number in a format of printf's, of at most 31 characters.
std::string formatted(const char* format, double value);

/// Three digits and a unit.
std::string timeText(double seconds);

/// Two digits behind the point.
std::string ratioText(double value);

/// Writes columns as wide as their widest cell. The first cell and the last `texts` of a row stand
/// left, the others right.
void printRows(std::ostream& stream, const std::vector<Row>& rows, std::size_t texts);

}  // namespace bench
