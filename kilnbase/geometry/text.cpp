// The text of the values in streams.
#include <ostream>
#include <span>

#include <kilnbase/geometry/Tangle.h>
#include <kilnbase/geometry/TpostXformMatrix.h>
#include <kilnbase/geometry/detail/numbers.h>

namespace {

// Every number takes the field width that the stream has on entry.
void printNumbers(std::ostream& stream, std::span<const double> numbers, const char* separator) {
  const std::streamsize width = stream.width(0);
  for (const double& number : numbers) {
    if (&number != numbers.data()) stream << separator;
    stream.width(width);
    stream << number;
  }
}

template <class Value>
std::ostream& printTuple(std::ostream& stream, const Value& value) {
  const std::streamsize width = stream.width(0);
  stream << '(';
  stream.width(width);
  printNumbers(stream, vxKilnBase::detail::numbersOf(value), ", ");
  return stream << ')';
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const T3dDblPoint& p) {
  return printTuple(stream, p);
}

std::ostream& operator<<(std::ostream& stream, const T4dDblPoint& p) {
  return printTuple(stream, p);
}

std::ostream& operator<<(std::ostream& stream, const T4dDblVector& v) {
  return printTuple(stream, v);
}

std::ostream& operator<<(std::ostream& stream, const Tscale& s) {
  return printTuple(stream, s);
}

std::ostream& operator<<(std::ostream& stream, const Tplane& plane) {
  return printTuple(stream, plane);
}

std::ostream& operator<<(std::ostream& stream, const Tquaternion& q) {
  return printTuple(stream, q);
}

std::ostream& operator<<(std::ostream& stream, const Tangle& angle) {
  return stream << angle.degrees() << " degrees";
}

std::ostream& operator<<(std::ostream& stream, const T4dDblMatrix& m) {
  const std::streamsize width = stream.width();
  for (std::size_t r = 0; r < 4; ++r) {
    stream.width(width);
    printNumbers(stream, {m[r], 4}, " ");
    stream << '\n';
  }
  return stream;
}

std::ostream& operator<<(std::ostream& stream, const TpostXformMatrix& xform) {
  const std::streamsize width = stream.width(0);
  const auto print = [&](const char* name, const auto& component) {
    stream << name;
    stream.width(width);
    stream << component;
  };
  print("translation ", xform.translation());
  print(", rotation ", xform.rotation());
  print(", scale ", xform.scale());
  return stream;
}
