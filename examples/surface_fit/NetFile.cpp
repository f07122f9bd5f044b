#include "examples/surface_fit/NetFile.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <string>

#include "examples/surface_fit/InputError.h"
#include "examples/surface_fit/NumericErrors.h"
#include "examples/surface_fit/Spline.h"

namespace surfacefit {

namespace {

// Whether a matrix of finite numbers could be read.
bool readMatrix(std::istream& stream, DoubleGenMat& matrix) {
  const ThrowingNumericErrors errors;
  try {
    stream >> matrix;
  } catch (const NumericError&) {
    return false;
  }
  const double* values = matrix.data();
  return std::all_of(values, values + matrix.length(), [](double v) { return std::isfinite(v); });
}

bool areClampedKnots(const DoubleGenMat& matrix) {
  const unsigned count = matrix.rows();
  if (matrix.cols() != 1 || count < 2 * kOrder) return false;
  const double* knots = matrix.data();
  return std::is_sorted(knots, knots + count) && knots[0] == knots[kOrder - 1] &&
         knots[count - kOrder] == knots[count - 1] && knots[kOrder - 1] < knots[count - kOrder];
}

TnumberSequence readKnots(std::istream& stream, const char* direction) {
  DoubleGenMat knots;
  if (!readMatrix(stream, knots) || !areClampedKnots(knots))
    throw InputError(std::string("the knots in ") + direction +
                     " are not a column of ascending numbers with four equal ones at either end; "
                     "give a net.txt that this program wrote");
  return TnumberSequence(knots.dataVec());
}

void writeKnots(const TnumberSequence& knots, std::ostream& stream) {
  stream << DoubleGenMat(knots.data(), knots.length(), 1) << "\n";
}

}  // namespace

void writeNet(const Surface& surface, std::ostream& stream) {
  stream.precision(std::numeric_limits<double>::max_digits10);
  stream << "# Bicubic B-spline surface: knots in x\n";
  writeKnots(surface.xKnots(), stream);
  stream << "# knots in y\n";
  writeKnots(surface.yKnots(), stream);
  stream << "# control net: heights, a row for each basis function in x, a column for each in y\n"
         << surface.net() << "\n";
}

Surface readNet(std::istream& stream) {
  const TnumberSequence xKnots = readKnots(stream, "x");
  const TnumberSequence yKnots = readKnots(stream, "y");
  DoubleGenMat net;
  if (!readMatrix(stream, net) || static_cast<int>(net.rows()) != basisSize(xKnots) ||
      static_cast<int>(net.cols()) != basisSize(yKnots))
    throw InputError(
        "the control net does not have four rows fewer than there are knots in x and "
        "four columns fewer than there are in y; give a net.txt that this program wrote");
  return Surface(xKnots, yKnots, net);
}

Surface readNetFile(const std::filesystem::path& file) {
  std::ifstream stream(file);
  if (!stream)
    throw InputError("cannot open '" + file.string() +
                     "'; give the net.txt of an earlier run with --evaluate");
  try {
    return readNet(stream);
  } catch (const InputError& error) {
    throw InputError(file.string() + ": " + error.what());
  }
}

}  // namespace surfacefit
