// The errors of the numeric library: numbers, messages, and the handler that receives them.
//
// Misuse, lack of memory and failed factorizations are raised as numbered errors. The number names
// a message in one of the registered catalogues; the function that raises the error passes the
// arguments of the message. One handler receives both, and the program may replace it.
//
// The default handler writes "** ", the message and ".\n" to the error report (`rptError`). After a
// warning it returns, after a fatal error it aborts the process. Kept as it is: a message that ends
// in a full stop is printed with a second one.
//
// After a handler that returns, the function that raised the error goes on as its own documentation
// says. A program that must not abort installs a handler that throws, for instance:
//
//     vxKilnBase::setMathErrorHandler([](const MathErrorRecord& error, std::va_list list) -> int {
//       char text[200];
//       const char* format = vxKilnBase::findMathMessage(error.number)->message;
//       std::vsnprintf(text, sizeof text, format, list);
//       throw std::domain_error(text);
//     });
//
// This handler throws for warnings too; `error.number == vxKilnBase::kEmptyVectorError` and its
// like tell the errors apart. An operation that an exception leaves frees what it has taken, and
// its objects stay as they were before the call.
//
// Nothing here is synchronised: it is for one thread at a time.
#pragma once

#include <cstdarg>
#include <cstdint>

#include <kilnbase/export.h>

/// What a raise site hands to the handler.
struct MathErrorRecord {
  std::uint16_t number;    ///< High 4 bits: catalogue id; low 12 bits: index in it. 0: no error.
  std::uint32_t severity;  ///< 0 warning, 1 the catalogue entry's own severity, 2 fatal.
  std::uint16_t classTag;  ///< Class that raised the error; 0xF000 for errors raised by number.
};

/// A message of a catalogue.
struct MathCatalogEntry {
  std::uint32_t severity;  ///< 0 warning, 2 fatal.
  const char* message;     ///< printf format.
};

/// A message catalogue. The caller of `addMathCatalog` keeps ownership; only `next` is written.
struct MathMessageCatalog {
  std::uint32_t id;  ///< 3 vectors, 4 matrices, 5 factorizations; others are free to use.
  const MathCatalogEntry* entries;  ///< Entry i has the number id * 0x1000 + i.
  std::uint32_t count;              ///< The number of entries.
  MathMessageCatalog* next;         ///< The list of the registered catalogues.
};

/// Registers catalogue 3 (general and vector messages) while at least one instance lives.
class KILNBASE_API RWMATHInit {
 public:
  RWMATHInit();
  ~RWMATHInit();
  RWMATHInit(const RWMATHInit&) : RWMATHInit() {}
  RWMATHInit& operator=(const RWMATHInit&) { return *this; }
};

/// Registers catalogue 4 (matrix messages) while at least one instance lives.
class KILNBASE_API RWMATXInit {
 public:
  RWMATXInit();
  ~RWMATXInit();
  RWMATXInit(const RWMATXInit&) : RWMATXInit() {}
  RWMATXInit& operator=(const RWMATXInit&) { return *this; }
};

/// Registers catalogue 5 (factorization messages) while at least one instance lives.
class KILNBASE_API RWFACTInit {
 public:
  RWFACTInit();
  ~RWFACTInit();
  RWFACTInit(const RWFACTInit&) : RWFACTInit() {}
  RWFACTInit& operator=(const RWFACTInit&) { return *this; }
};

namespace vxKilnBase {

/// The errors by name, for handlers that tell them apart; docs/errors.md has their texts, who
/// raises them, and what happens after a handler that returns.
enum MathErrorNumber : std::uint16_t {
  // General and vector errors.
  kFunctionOrderError = 0x3000,
  kSeriesParityError = 0x3001,
  kFormatVersionError = 0x3002,
  kDivisionByZeroError = 0x3003,
  kGenericError = 0x3004,
  kIndexError = 0x3005,
  kUndefinedLUError = 0x3006,
  kRowsAndColumnsError = 0x3007,
  kOutOfMemoryError = 0x3008,
  kTooFewElementsError = 0x3009,
  kNotSquareError = 0x300A,
  kBlockSizeError = 0x300B,
  kSliceError = 0x300C,
  kStrideError = 0x300D,
  kVectorAndMatrixError = 0x300E,
  kVectorLengthsError = 0x300F,
  kZeroDeviationError = 0x3010,
  kEmptyVectorError = 0x3011,
  kZeroPivotError = 0x3012,
  kZerothRootError = 0x3013,

  // Matrix errors.
  kMatrixInternalError = 0x4000,
  kMatrixPickError = 0x4001,
  kConstantChangedError = 0x4002,
  kComplexConstantChangedError = 0x4003,
  kMatrixSizesError = 0x4004,
  kElementError = 0x4005,
  kRowError = 0x4006,
  kColumnError = 0x4007,
  kDiagonalError = 0x4008,
  kFixedElementError = 0x4009,
  kMatrixPointsError = 0x400A,
  kBandedPointsError = 0x400B,
  kBandwidthsError = 0x400C,
  kMatrixNotSquareError = 0x400D,
  kNotSymmetricError = 0x400E,
  kNotAntiSymmetricError = 0x400F,
  kNotHermitianError = 0x4010,
  kNotBandedError = 0x4011,
  kNotTriangularError = 0x4012,
  kNotTridiagonalError = 0x4013,
  kMatrixVectorProductError = 0x4014,
  kVectorMatrixProductError = 0x4015,
  kMatrixProductError = 0x4016,
  kMatrixElementsError = 0x4017,
  kLeadingSubmatrixError = 0x4018,
  kRestoredLengthError = 0x4019,

  // Factorization errors.
  kFactorizationInternalError = 0x5000,
  kNoConditionNumberError = 0x5001,
  kRightSideLengthError = 0x5002,
  kNonRealDiagonalError = 0x5003,
  kPermutedLengthError = 0x5004,
  kShiftDirectionError = 0x5005,
  kShiftColumnsError = 0x5006,
  kDataHeightError = 0x5007,
  kRotationsLengthError = 0x5008,
  kResidualsLengthError = 0x5009,
  kNormalEquationsError = 0x500A,
  kDataColumnError = 0x500B,
  kVectorStrideError = 0x500C,
  kFactorNotSquareError = 0x500D,
  kFactorBandwidthError = 0x500E,
  kFactoredTwiceError = 0x500F,
  kTooFewRowsError = 0x5010,
  kNotFactoredError = 0x5011,
  kPivotPositionError = 0x5012,
  kEigenvaluesError = 0x5013,
};

/// Receives a raised error and the arguments of its message (for a catalogue 3 message the class
/// name is the first). What it returns is passed back to the raise site, which may go on.
using MathErrorHandler = int (*)(const MathErrorRecord& record, std::va_list arguments);

/// Installs `handler` (null: the default handler) and returns the one before it.
KILNBASE_API MathErrorHandler setMathErrorHandler(MathErrorHandler handler);

/// Appends a catalogue to the list. One that is in the list already is not added twice.
KILNBASE_API void addMathCatalog(MathMessageCatalog& catalog);

/// Unlinks the first catalogue with this id; does nothing when there is none.
KILNBASE_API void removeMathCatalog(std::uint32_t id);

/// The entry of an error number, or null when no registered catalogue has its id.
///
/// Kept as it is: the index in the catalogue is not checked. A number past the end of a registered
/// catalogue reads past the end of its entries, here and in the default handler.
[[nodiscard]] KILNBASE_API const MathCatalogEntry* findMathMessage(std::uint16_t number);

namespace detail {
KILNBASE_API int raiseMathErrorArguments(MathErrorRecord record, ...);
}

/// Raises an error of the class `className`, whose name is the first argument of the message.
///
/// The format of the message is looked up when the program runs, so that no compiler compares it
/// with the arguments: pass what the conversions of the format want, an `unsigned` for `%u`.
/// Returns what the handler returns.
template <class... Arguments>
int raiseMathError(const MathErrorRecord& record, const char* className, Arguments... arguments) {
  return detail::raiseMathErrorArguments(record, className, arguments...);
}

/// Raises an error by number, with the catalogue's severity and class tag 0xF000. The arguments
/// follow the format as above.
template <class... Arguments>
int raiseMathError(std::uint16_t number, Arguments... arguments) {
  return detail::raiseMathErrorArguments(MathErrorRecord{number, 1, 0xF000}, arguments...);
}

}  // namespace vxKilnBase
