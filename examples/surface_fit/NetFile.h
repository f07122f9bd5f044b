// The file of a surface: its knots and its control net.
//
// Three matrices in the library's text form: the knots in x as a column, the knots in y as a
// column, and the net with a row for each basis function in x and a column for each in y. A heading
// without digits, which the reader skips, stands before each. Numbers are written with 17 digits,
// so that a surface that is read back is the one that was written.
#pragma once

#include <filesystem>
#include <iosfwd>

#include "examples/surface_fit/Surface.h"

namespace surfacefit {

void writeNet(const Surface& surface, std::ostream& stream);

/// Throws InputError for text that is not the net of a surface.
Surface readNet(std::istream& stream);

/// The same from a file, whose name goes into the messages.
Surface readNetFile(const std::filesystem::path& file);

}  // namespace surfacefit
