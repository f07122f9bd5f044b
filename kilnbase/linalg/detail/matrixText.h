// The text form of matrices: "MxN [", the rows, a line each, and "]".
#pragma once

#include <cctype>
#include <cstdint>
#include <istream>
#include <ostream>

#include <kilnbase/linalg/Vec.h>
#include <kilnbase/linalg/detail/counts.h>
#include <kilnbase/linalg/detail/errors.h>

namespace vxKilnBase::detail {

/// Every element takes the field width that the stream has on entry.
template <class Matrix>
void printMatrix(std::ostream& stream, const Matrix& a) {
  const std::streamsize width = stream.width(0);
  stream << a.rows() << 'x' << a.cols() << " [\n";
  for (int i = 0; i < asInt(a.rows()); ++i) {
    for (int j = 0; j < asInt(a.cols()); ++j) {
      stream.width(width);
      stream << a(i, j) << ' ';
    }
    stream << '\n';
  }
  stream << ']';
}

inline bool digitComesNext(std::istream& stream) {
  return std::isdigit(stream.peek()) != 0;
}

/// Reads "MxN" or "M N", and skips what stands before the first digit.
inline void readSize(std::istream& stream, unsigned& m, unsigned& n) {
  while (stream.good() && !digitComesNext(stream)) stream.get();
  stream >> m >> std::ws;
  if (stream.good() && !digitComesNext(stream)) stream.get();
  stream >> n;
}

/// Reads the size and the elements, row by row, of a matrix of the class `className`. When the text
/// is cut short, or the number of elements is not m n, raises kMatrixElementsError and returns
/// false.
template <class T>
bool readMatrix(std::istream& stream, const char* className, unsigned& m, unsigned& n,
                Vec<T>& values) {
  readSize(stream, m, n);
  values.scanFrom(stream);
  if (stream.good() && values.length() == std::uint64_t{m} * n) return true;
  raiseMatrixElements(values.length(), className, m, n);
  return false;
}

/// Fills a matrix row by row, writing the elements that differ from those there.
template <class Matrix, class T>
void setRows(Matrix& a, const Vec<T>& values) {
  const T* value = values.data();
  for (int i = 0; i < asInt(a.rows()); ++i) {
    for (int j = 0; j < asInt(a.cols()); ++j, ++value) {
      if (a.val(i, j) != *value) a.set(i, j, *value);
    }
  }
}

}  // namespace vxKilnBase::detail
