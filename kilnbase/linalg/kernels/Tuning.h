// Block sizes and switch points that were found by measuring.
//
// Each constant stands with the choice that it makes, its size as a formula, the memory that this
// size fits into, and the bench line: the arguments of `./kiln bench` that measure it.
//
// Processor of the bench lines: Intel Xeon, family 6, model 207 (AVX-512; per core 48 KiB of
// first-level data cache, 2 MiB of second-level cache). The first measurements did not record
// theirs. A function takes at most 64 KiB of stack.
//
// Constants only: kernel sources, which are compiled for several instruction sets, include this
// header. `width` is the number of doubles in a register: 2 (baseline), 4 (AVX2) or 8 (AVX-512).
#pragma once

#include <cstddef>

namespace vxKilnBase::kernels::tuning {

using Index = std::ptrdiff_t;

// Doubles in the widest register of all instruction sets. Not measured.
inline constexpr Index kWidestRegister = 8;

// ---- Matrix product (Product.cpp) ----

// A tile of C is kTileVectors registers high and kTileColumns wide. Beside the tile, the product
// takes one column of the panel of A and one element of B.
//   Registers: kTileVectors * kTileColumns + kTileVectors + 1 = 28 of 32 (AVX-512), 16 of 16
//   (AVX2), 11 of 16 (baseline, which needs others for its separate multiplications). Bench:
//   --filter "product A B" --sizes 32,100,500
template <Index width>
inline constexpr Index kTileVectors = width == 2 ? 2 : 3;
template <Index width>
inline constexpr Index kTileColumns = width == 8 ? 8 : 4;

// Columns of A and rows of B that are multiplied at a time.
//   Panel of A: kTileVectors * width * kPanelDepth * 8 bytes = 36 KiB (AVX-512), 18 KiB (AVX2),
//   6 KiB (baseline). Strip of B: kTileColumns * kPanelDepth * 8 bytes = 12 KiB, 6 KiB, 6 KiB. Both
//   together, 48 KiB, 24 KiB and 12 KiB, fit into the first-level cache; the panel fits the stack.
//   Bench: --filter "product A B" --sizes 500,1000
inline constexpr Index kPanelDepth = 192;

// Columns of B that are multiplied at a time.
//   Block of B: kPanelDepth * kBlockColumns * 8 bytes = 576 KiB, in the second-level cache.
//   Bench: --filter "product A B" --sizes 500,1000
inline constexpr Index kBlockColumns = 384;

// A large product copies kBlockPanels panels of A at a time, over kBlockDepth columns, and meets
// them strip by strip with B. Where neighbours in a row of B are contiguous, as in the product with
// a transposed matrix, strips of kCopiedColumns columns are copied too: each would touch a page for
// every row.
//   Panels: kBlockPanels * kTileVectors * width * kBlockDepth * 8 bytes = 768 KiB (AVX-512), in
//   half of the second-level cache; 240 KiB (AVX2) and 256 KiB (baseline), in half of one of 512
//   KiB. Strip: kTileColumns * kBlockDepth * 8 bytes = 16 KiB (AVX-512), 8 KiB, in half of the
//   first-level cache. Copied strips: kCopiedColumns * kBlockDepth * 8 bytes = 1 MiB, which are
//   read in order. Huge pages for the copies gained nothing. Bench: --filter "product A B" --sizes
//   500,1000
template <Index width>
inline constexpr Index kBlockPanels = width == 8   ? 16
                                      : width == 4 ? 10
                                                   : 32;
inline constexpr Index kBlockDepth = 256;
inline constexpr Index kCopiedColumns = 512;

// Doubles that these copies take with registers of `width` doubles.
template <Index width>
inline constexpr Index kBlockScratch =
    (kBlockPanels<width> * kTileVectors<width> * width + kCopiedColumns) * kBlockDepth + width;

// A product is large when rows, columns and depth are at least this.
//   Bench: --filter "product A B" --sizes 100,500
inline constexpr Index kLeastLarge = 384;

// From this depth on a tile of C is fetched before its sums are computed.
//   Bench: --filter "product A B" --sizes 100,500
inline constexpr Index kLeastPrefetchDepth = 64;

// With fewer columns of C than this, contiguous columns of A are read in place and not copied.
//   Bench: --filter "product A B" --sizes 100,500
inline constexpr Index kLeastPackedColumns = 128;

// ---- Matrix times vector (MatrixVector.cpp) ----

// Registers of rows that are summed at a time.
//   Registers: kVectorTile sums of 32 (AVX-512) or 16, in up to 4 chains while the tile is low.
//   Bench: --filter "product A v" --sizes 100,500
inline constexpr Index kVectorTile = 8;

// A matrix of more columns than kMostUnblockedColumns is taken kColumnBlock columns at a time, and
// each tile fetches the rows of the next.
//   Block: m * kColumnBlock * 8 bytes, for m = 1000 125 KiB, in the second-level cache.
//   Bench: --filter "product A v" --sizes 100,500,1000
inline constexpr Index kMostUnblockedColumns = 128;
inline constexpr Index kColumnBlock = 16;

// ---- Elements of vectors (Elements.cpp) ----

// Shorter vectors are summed with four plain accumulators, longer ones with four registers.
//   Bench: --filter "vector dot,vector sum" --sizes 10,1000
inline constexpr Index kLeastRegisterSum = 16;

// ---- QR factorization (LazyReflections, dqrdc, BlockReflector, reflector.cpp) ----

// Matrices of at most this many elements are reflected column by column at once; in larger ones
// reflections stay pending.
//   Matrix: kMostEager * 8 bytes = 31 KiB: the second pass over it reads the first-level cache.
//   Bench: --filter "QR" --sizes 32,100
inline constexpr Index kMostEager = 4000;

// Registers that hold a row of the largest matrix that is pivoted without moving its columns.
//   Registers: the sums of a step, 2 * kSmallQrRegisters at most. Copy: (kSmallQrRegisters *
//   width)² * 8 bytes = 8 KiB (AVX-512), in the first-level cache. With 5 to 8 registers the
//   baseline took up to twice as long.
//   Bench: --filter "QR, pivoted" --sizes 8,32
inline constexpr Index kSmallQrRegisters = 4;

// Factors of pending reflections: (pending + 1) rows, one element for each column.
//   Size: kLazyFactors * 8 bytes = 48 KiB of the stack. It holds kMostPending + 1 rows for up to
//   1228 columns and 2 rows, for one pending reflection, for up to 3072.
//   Bench: --filter "QR, pivoted" --sizes 500,1000
inline constexpr Index kLazyFactors = 6144;
inline constexpr Index kMostPending = 4;

// Rows that one pass over the columns takes at a time.
//   Vectors of the pass: (kMostPending + 1) * kSweepRows * 8 bytes = 40 KiB, in the first-level
//   cache while the columns pass by.
//   Bench: --filter "least squares" --sizes 10000x100
inline constexpr Index kSweepRows = 1024;

// Elements of a row that are copied to the stack, worked on there and copied back.
//   Size: kRowSlice * 8 bytes = 512 bytes.
//   Bench: --filter "QR, pivoted" --sizes 100,500
inline constexpr Index kRowSlice = 64;

// Columns of a panel whose reflections are applied as one block.
//   A tile of the product is 24 rows high (AVX-512), so that Vᵀ C takes one row of tiles.
//   T⁻¹: kReflectorColumns² * 8 bytes = 4.5 KiB of the stack.
//   Bench: --filter "QR, unpivoted" --sizes 100,500,1000
inline constexpr Index kReflectorColumns = 24;

// Columns of C that a block of reflections takes at a time.
//   Vᵀ C: kReflectorColumns * kReflectedSlice * 8 bytes = 18 KiB of the stack, beside T⁻¹ and the
//   36 KiB of the product.
//   Bench: --filter "QR, unpivoted" --sizes 500,1000
inline constexpr Index kReflectedSlice = 96;

// The last rows or columns, at most this many, are factored without blocks.
//   Bench: --filter "QR, unpivoted" --sizes 32,100
inline constexpr Index kMostUnblocked = 64;

// From this many reflections on their product is formed by blocks.
//   Bench: --filter "SVD, all vectors" --sizes 32,100
inline constexpr Index kLeastBlockedProduct = 64;

// ---- Many right-hand sides (rightHandSides) ----

// From this many right-hand sides on they are multiplied by Q block by block. Forming a block of
// kReflectorColumns reflections costs as much as applying them to 6 columns one by one.
//   Bench: --filter "QR, right-hand sides" --sizes 32,100,500
inline constexpr Index kLeastBlockedColumns = 8;

// Triangles up to this order are solved without dividing them further.
//   Triangle: kSmallTriangle² * 8 bytes = 32 KiB, in the first-level cache.
//   Bench: --filter "Cholesky, right-hand sides" --sizes 500
inline constexpr Index kSmallTriangle = 64;

// ---- LU factorization (Lu.cpp, dgefa, dgedi, dgeslColumns) ----

// Columns of a panel, which one pass scales, updates and searches for the next pivot. The kernel is
// written for this number.
//   Registers: one for each column, of kWidth rows at a time.
//   Bench: --filter "LU" --sizes 32,100
inline constexpr Index kLuPanelColumns = 8;

// Columns whose steps are carried into the rest as one product, at most.
//   Multipliers: n * kLuBlockColumns * 8 bytes, for n = 1000 500 KiB, in the second-level cache
//   beside the tiles that they meet. 48, 96, 128, 192 and no limit took up to 20% longer.
//   Bench: --filter "LU" --sizes 200,500,1000
inline constexpr Index kLuBlockColumns = 64;

// Rows and columns of the inverse that are worked on at a time.
//   Three blocks of kInverseBlock² * 8 bytes and the scratch of a product: 60 KiB of the stack.
//   Bench: --filter "LU and inverse" --sizes 100,500
inline constexpr Index kInverseBlock = 32;

// Steps and right-hand sides that dgeslColumns takes at a time.
//   Block: kSolvedSteps * kSolvedColumns * 8 bytes = 8 KiB of the stack. Not measured.
inline constexpr Index kSolvedSteps = 32;
inline constexpr Index kSolvedColumns = 32;

// ---- Symmetric factorization (Symmetric.cpp, SymmetricSmall.cpp, dspfa, dspslColumns) ----

// Columns that a panel eliminates at most.
//   Panel: n * kSymmetricPanelColumns * 8 bytes, for n = 1000 250 KiB, in the second-level cache.
//   24 and 48 took up to 10% longer, 64 up to 40%.
//   Bench: --filter "symmetric" --sizes 100,200,500
inline constexpr Index kSymmetricPanelColumns = 32;

// Order of the largest matrix that is eliminated as a square whose rows stay.
//   Square: kMostSmallSymmetric² * 8 bytes = 8 KiB, in the first-level cache.
//   Bench: --filter "symmetric" --sizes 32,100
inline constexpr Index kMostSmallSymmetric = 32;

// Right-hand sides that meet a column of the packed factors while the caches hold it. Not measured.
inline constexpr Index kPackedRightHandSides = 16;

// ---- Cholesky factorization (Cholesky.cpp, dchdc) ----

// Rows that are eliminated in registers without pivoting. The kernel is written for this number.
//   Registers: kStripRows of 32 or 16 in kWidth columns.
//   Bench: --filter "Cholesky, unpivoted" --sizes 100,500
inline constexpr Index kStripRows = 8;

// Rows that are eliminated with pivoting before they are subtracted from the rows below.
//   Block: kPivotedRows * p * 8 bytes, for p = 1000 375 KiB, in the second-level cache.
//   Bench: --filter "Cholesky, pivoted" --sizes 100,500,1000
inline constexpr Index kPivotedRows = 48;

// Order of the largest matrix, or rest of a matrix, that is eliminated without moving its rows.
//   Copy: kMostSmall² * 8 bytes = 8 KiB, in the first-level cache.
//   Bench: --filter "Cholesky, pivoted" --sizes 32,100
inline constexpr Index kMostSmall = 32;

// ---- Rotations (Rotations.cpp, SweepBatch) ----

// Sweeps of rotations that pass over the matrix together, and registers of rows that they take.
//   Registers: (kFusedSweeps + 1) * kRotatedVectors = 20 of 32 (AVX-512), 10 of 16.
//   Bench: --filter "SVD, all vectors" --sizes 100,500
inline constexpr Index kFusedSweeps = 4;
template <Index width>
inline constexpr Index kRotatedVectors = width == 8 ? 4 : 2;

// Complete batches of sweeps that wait for each other, and rows of the matrix that all of them are
// applied to while the caches hold these rows.
//   Rows: kRotatedRows * n * 8 bytes, for n = 500 250 KiB.
//   Factors: kMostBatches * (2 * kFusedSweeps + 1) * n * 8 bytes, for n = 500 281 KiB.
//   Both fit into half of the second-level cache. 4 and 16 batches, and 32 rows, took up to 10%
//   longer. Bench: --filter "SVD, all vectors" --sizes 100,500
inline constexpr Index kMostBatches = 8;
inline constexpr Index kRotatedRows = 64;

// A sweep over r columns joins a batch that spans at most kSpareRotations + r / kSpareShare columns
// more.
//   Bench: --filter "SVD, all vectors" --sizes 32,100
inline constexpr Index kSpareRotations = 4;
inline constexpr Index kSpareShare = 4;

}  // namespace vxKilnBase::kernels::tuning
