// The numeric errors that the library raises: a function each, typed by the arguments of its
// message.
//
// raiseRow(i, rows) raises kRowError with the severity of its catalogue and returns when the
// handler does. Numbers stand in MathError.h, formats in messages.h. A format that does not take
// the arguments does not compile.
#pragma once

#include <cstdint>
#include <string_view>

#include <kilnbase/linalg/MathError.h>
#include <kilnbase/linalg/detail/messages.h>

namespace vxKilnBase::detail {

/// The printf conversion of an argument.
template <class Argument>
constexpr char kConversion = 0;
template <>
inline constexpr char kConversion<int> = 'd';
template <>
inline constexpr char kConversion<unsigned> = 'u';
template <>
inline constexpr char kConversion<double> = 'g';
template <>
inline constexpr char kConversion<const char*> = 's';

/// Whether the conversions of a format are those of the arguments, in this order.
template <class... Arguments>
consteval bool takes(std::string_view format) {
  const char conversions[] = {kConversion<Arguments>..., '\0'};
  const char* next = conversions;
  for (auto at = format.find('%'); at != format.npos; at = format.find('%', at + 1)) {
    if (*next == '\0' || format[at + 1] != *next++) return false;
  }
  return *next == '\0';
}

/// Raises an error by number.
template <MathErrorNumber number, class... Arguments>
struct RaiseError {
  static_assert(takes<Arguments...>(messageOf(number).message));
  void operator()(Arguments... arguments) const { raiseMathError(number, arguments...); }
};

/// A class that raises errors under its own name and tag.
struct ErrorSource {
  const char* className;
  std::uint16_t classTag;
};

/// Raises an error of a class, whose name is the first argument of the message.
template <MathErrorNumber number, std::uint32_t severity, class... Arguments>
struct RaiseClassError {
  static_assert(takes<const char*, Arguments...>(messageOf(number).message));
  void operator()(ErrorSource source, Arguments... arguments) const {
    raiseMathError({number, severity, source.classTag}, source.className, arguments...);
  }
};
template <MathErrorNumber number, class... Arguments>
using RaiseVectorError = RaiseClassError<number, kDefault, Arguments...>;

// --- Storage

inline constexpr ErrorSource kBlockSource = {"RWBlock", 0x901A};
inline constexpr RaiseClassError<kOutOfMemoryError, kFatal> raiseOutOfMemory;

// --- Vectors

inline constexpr RaiseVectorError<kDivisionByZeroError> raiseDivisionByZero;
/// The index and the last index that there is.
inline constexpr RaiseVectorError<kIndexError, int, unsigned> raiseIndex;
/// Start, length and stride of the slice; length of the vector.
inline constexpr RaiseVectorError<kSliceError, int, unsigned, int, unsigned> raiseSlice;
inline constexpr RaiseVectorError<kStrideError> raiseStride;
/// The vector's own length, then the other one's.
inline constexpr RaiseVectorError<kVectorLengthsError, unsigned, unsigned> raiseVectorLengths;
/// The function that wants an element.
inline constexpr RaiseVectorError<kEmptyVectorError, const char*> raiseEmptyVector;
/// Class, length, what wants more elements, and how many.
inline constexpr RaiseError<kTooFewElementsError, const char*, unsigned, const char*, int>
    raiseTooFewElements;

// --- Matrices. Rows stand before columns; texts are names of matrix classes.

/// The index and the last index that there is.
inline constexpr RaiseError<kMatrixPickError, int, int> raiseMatrixPick;
/// The old value and the new one.
inline constexpr RaiseError<kConstantChangedError, double, double> raiseConstantChanged;
/// The size of the other matrix, then that of this one.
inline constexpr RaiseError<kMatrixSizesError, int, int, int, int> raiseMatrixSizes;
/// The place asked for; the size of the matrix.
inline constexpr RaiseError<kElementError, int, int, unsigned, unsigned> raiseElement;
inline constexpr RaiseError<kRowError, int, unsigned> raiseRow;
inline constexpr RaiseError<kColumnError, int, unsigned> raiseColumn;
inline constexpr RaiseError<kDiagonalError, int, const char*, unsigned, unsigned> raiseDiagonal;
inline constexpr RaiseError<kFixedElementError, int, int, const char*> raiseFixedElement;
/// The length of the vector; the size of the matrix.
inline constexpr RaiseError<kMatrixPointsError, unsigned, unsigned, unsigned, const char*>
    raiseMatrixPoints;
inline constexpr RaiseError<kMatrixNotSquareError, int, int> raiseMatrixNotSquare;
inline constexpr RaiseError<kMatrixVectorProductError, const char*, unsigned, unsigned, unsigned>
    raiseMatrixVectorProduct;
inline constexpr RaiseError<kVectorMatrixProductError, unsigned, const char*, unsigned, unsigned>
    raiseVectorMatrixProduct;
/// The sizes of the left and the right factor as they are multiplied.
inline constexpr RaiseError<kMatrixProductError, const char*, unsigned, unsigned, unsigned,
                            unsigned>
    raiseMatrixProduct;
/// The number of elements read; the size told.
inline constexpr RaiseError<kMatrixElementsError, unsigned, const char*, unsigned, unsigned>
    raiseMatrixElements;
/// The order asked for; that of the matrix.
inline constexpr RaiseError<kLeadingSubmatrixError, unsigned, unsigned> raiseLeadingSubmatrix;

// --- Factorizations. Of two lengths the one given stands before the one expected.

inline constexpr RaiseError<kNoConditionNumberError> raiseNoConditionNumber;
inline constexpr RaiseError<kRightSideLengthError, unsigned, unsigned> raiseRightSideLength;
inline constexpr RaiseError<kPermutedLengthError, unsigned, unsigned> raisePermutedLength;
inline constexpr RaiseError<kShiftDirectionError> raiseShiftDirection;
/// The first and the last column.
inline constexpr RaiseError<kShiftColumnsError, int, int> raiseShiftColumns;
inline constexpr RaiseError<kDataHeightError, unsigned, unsigned> raiseDataHeight;
inline constexpr RaiseError<kRotationsLengthError, unsigned, unsigned> raiseRotationsLength;
inline constexpr RaiseError<kResidualsLengthError, unsigned, unsigned> raiseResidualsLength;
inline constexpr RaiseError<kVectorStrideError> raiseVectorStride;
/// Rows and columns.
inline constexpr RaiseError<kFactorNotSquareError, unsigned, unsigned> raiseFactorNotSquare;
/// Rows and columns.
inline constexpr RaiseError<kTooFewRowsError, int, int> raiseTooFewRows;
inline constexpr RaiseError<kNotFactoredError> raiseNotFactored;
inline constexpr RaiseError<kPivotPositionError, int> raisePivotPosition;
/// The reason.
inline constexpr RaiseError<kEigenvaluesError, const char*> raiseEigenvalues;

}  // namespace vxKilnBase::detail
