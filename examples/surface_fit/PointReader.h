// Reading measured points from text.
//
// A point is a line. Its columns are separated by semicolons if the line has any, else by commas if
// it has any, else by blanks and tabs; a field may stand in double quotes. A comma in a number is a
// decimal comma where semicolons separate. "#" starts a comment, and lines without anything else
// are skipped. The first line is a heading when none of its fields is a number.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

#include "examples/surface_fit/Points.h"

namespace surfacefit {

/// What is known about a file of points before it is read.
struct PointFormat {
  /// The columns of x, y and z, or of x and y: numbers from 1, or names of the heading. Empty:
  /// those that the heading calls x, y and z, else the only three columns, or two where heights are
  /// not needed.
  std::vector<std::string> columns;
  bool needsHeights = true;
};

/// Reads points. Throws InputError, naming the line, for a line without the columns, and for a
/// number that is no number, not finite, or beyond what can be measured.
Measurement readPoints(std::istream& text, const PointFormat& format = {});

/// The same from a file, or from standard input if its name is "-". The name goes into the
/// messages.
Measurement readPointFile(const std::filesystem::path& file, const PointFormat& format = {});

}  // namespace surfacefit
