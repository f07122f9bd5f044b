// No step takes a branch: which row is the pivot is as random as the matrix, and a processor that
// guesses wrong waits longer than the whole inverse takes.

#include <cstddef>
#include <cstdint>

#include <kilnbase/linalg/kernels/Inverse.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

// A row is one register, or two where registers hold two doubles.
constexpr int kLanes = KILN_VECTOR_BYTES < 32 ? 2 : 4;
constexpr int kParts = 4 / kLanes;
constexpr int kPartBytes = 8 * kLanes;

typedef double Part __attribute__((vector_size(kPartBytes)));
typedef double UnalignedPart __attribute__((vector_size(kPartBytes), aligned(8), may_alias));
typedef long long Bits __attribute__((vector_size(kPartBytes)));  // or a condition: all or none
typedef float Halves __attribute__((vector_size(kPartBytes)));
typedef std::int32_t HalfNumbers __attribute__((vector_size(kPartBytes), may_alias));

// A row of the matrix and its companion during the elimination. Both share the storage. In the
// cleared columns the matrix is the identity: there stands the companion. In the other columns the
// companion is the identity, but for the order of its columns: there stands the matrix.
struct Row {
  Part part[kParts];
};

inline __attribute__((always_inline)) Row loadRow(const double* from) {
  Row row;
  for (std::ptrdiff_t i = 0; i < kParts; ++i) {
    row.part[i] = *reinterpret_cast<const UnalignedPart*>(from + i * kLanes);
  }
  return row;
}

// The element of the column in all lanes.
template <int kColumn>
inline __attribute__((always_inline)) Part spread(const Row& row) {
  return __builtin_shuffle(row.part[kColumn / kLanes], Bits{} + kColumn % kLanes);
}

template <int kColumn>
inline __attribute__((always_inline)) void setElement(Row& row, double value) {
  Bits changed;
  for (int i = 0; i < kLanes; ++i) changed[i] = i == kColumn % kLanes ? -1 : 0;
  Part& part = row.part[kColumn / kLanes];
  const Bits kept = reinterpret_cast<Bits>(part) & ~changed;
  part = reinterpret_cast<Part>(kept | (reinterpret_cast<Bits>(Part{} + value) & changed));
}

inline __attribute__((always_inline)) void swapIf(Bits condition, Row& a, Row& b) {
  for (int i = 0; i < kParts; ++i) {
    const Bits inA = reinterpret_cast<Bits>(a.part[i]), inB = reinterpret_cast<Bits>(b.part[i]);
    const Bits change = (inA ^ inB) & condition;
    a.part[i] = reinterpret_cast<Part>(inA ^ change);
    b.part[i] = reinterpret_cast<Part>(inB ^ change);
  }
}

// The number of all swaps is the sum of those of the columns; no other swaps have the same one.
constexpr long long kSwapNumber[4] = {6, 2, 1, 0};

// Swaps the row kColumn with that of the pivot. Returns the number of the swap in all lanes: the
// distance of the rows times kSwapNumber. A NaN may be compared either way: a column with a NaN
// makes all elements of the inverse NaN.
template <int kColumn>
inline __attribute__((always_inline)) Bits movePivotUp(Row (&rows)[4]) {
  Part square[4];
  Bits isPivot[4];
  for (int i = kColumn; i < 4; ++i) {
    const Part element = spread<kColumn>(rows[i]);
    square[i] = element * element;
    isPivot[i] = ~Bits{};
  }
  for (int upper = kColumn; upper < 4; ++upper) {
    for (int lower = upper + 1; lower < 4; ++lower) {
      const Bits lowerIsGreater = square[lower] > square[upper];
      isPivot[lower] &= lowerIsGreater;
      isPivot[upper] &= ~lowerIsGreater;
    }
  }
  Bits number = {};
  for (int i = kColumn + 1; i < 4; ++i) {
    number += isPivot[i] & (kSwapNumber[kColumn] * (i - kColumn));
    swapIf(isPivot[i], rows[kColumn], rows[i]);
  }
  return number;
}

// Divides the pivot row by the pivot and clears the column in the other rows.
template <int kColumn>
inline __attribute__((always_inline)) void eliminate(Row (&rows)[4]) {
  Row& pivotRow = rows[kColumn];
  const Part pivot = spread<kColumn>(pivotRow);
  setElement<kColumn>(pivotRow, 1.0);
  for (Part& part : pivotRow.part) part /= pivot;
  for (int i = 0; i < 4; ++i) {
    if (i == kColumn) continue;
    const Part factor = spread<kColumn>(rows[i]);
    setElement<kColumn>(rows[i], 0.0);
    for (int j = 0; j < kParts; ++j) rows[i].part[j] -= factor * pivotRow.part[j];
  }
}

// Where the elements of the inverse's rows come from: element c is made of the floats half[2 c] and
// half[2 c + 1] of the row after the elimination.
struct alignas(32) Columns {
  std::int32_t half[8];
};

// By the number of all swaps.
struct ColumnsTable {
  Columns columns[24];
};

constexpr ColumnsTable kColumnsTable = [] {
  ColumnsTable table = {};
  for (int number = 0; number < 24; ++number) {
    std::ptrdiff_t source[4] = {0, 1, 2, 3};  // the row numbers before the swaps
    long long rest = number;
    for (int i = 0; i < 3; ++i) {
      const long long row = i + rest / kSwapNumber[i];
      rest %= kSwapNumber[i];
      const std::ptrdiff_t upper = source[i];
      source[i] = source[row];
      source[row] = upper;
    }
    for (std::int32_t c = 0; c < 4; ++c) {
      std::int32_t* const half = table.columns[number].half + 2 * source[c];
      half[0] = 2 * c;
      half[1] = 2 * c + 1;
    }
  }
  return table;
}();

inline __attribute__((always_inline)) void storeRow(double* to, const Row& row,
                                                    const Columns& columns) {
  if constexpr (kParts == 1) {
    const auto halves = reinterpret_cast<Halves>(row.part[0]);
    const auto order = *reinterpret_cast<const HalfNumbers*>(columns.half);
    *reinterpret_cast<UnalignedPart*>(to) =
        reinterpret_cast<Part>(__builtin_shuffle(halves, order));
  } else {
    for (std::ptrdiff_t c = 0; c < 4; ++c) {
      const std::int32_t from = columns.half[2 * c] / 2;
      to[c] = reinterpret_cast<const double*>(row.part)[from];
    }
  }
}

void invert4x4(const double* from, double* to) {
  Row rows[4] = {loadRow(from), loadRow(from + 4), loadRow(from + 8), loadRow(from + 12)};
  Bits swaps = movePivotUp<0>(rows);
  eliminate<0>(rows);
  swaps += movePivotUp<1>(rows);
  eliminate<1>(rows);
  swaps += movePivotUp<2>(rows);
  eliminate<2>(rows);
  eliminate<3>(rows);
  const Columns& columns = kColumnsTable.columns[swaps[0]];
  for (std::ptrdiff_t i = 0; i < 4; ++i) storeRow(to + 4 * i, rows[i], columns);
}

}  // namespace

extern const InverseKernels inverseKernels = {invert4x4};

}  // namespace vxKilnBase::kernels::KILN_ISA
