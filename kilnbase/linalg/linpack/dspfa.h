// Factorization of a symmetric indefinite matrix in packed storage.
#pragma once

namespace vxKilnBase::linpack {

/// Factors the symmetric matrix A of order n as U D Uᵀ with symmetric pivoting; D has blocks of
/// order 1 and 2 on its diagonal.
///
/// `ap` holds the upper triangle column by column, n(n+1)/2 elements, and on return the factors:
/// the blocks of D in their places, and above each block the multipliers, negated. The elimination
/// goes from the last column to the first, and an exchange moves no multipliers of later columns.
/// kpvt[k] (n elements) is positive for a block of order 1: the row, counted from 1, that changed
/// places with row k + 1. For a block of order 2 in columns k and k - 1 both entries are the
/// negative number of the row that changed places with row k. The pivots are chosen by the test of
/// Bunch and Kaufman.
///
/// Returns 0, or the number, counted from 1, of the last eliminated block of order 1 that is 0.
/// That step does nothing, and the elimination goes on. Then dspsl and dspdi divide by 0.
///
/// About 15 KiB of stack are used.
///
/// Sources: LINPACK Users' Guide, SIAM 1979, chapter 5. J. R. Bunch, L. Kaufman, Some stable
/// methods for calculating inertia and solving symmetric linear systems, Mathematics of Computation
/// 31 (1977), 163-179.
int dspfa(double* ap, int n, int* kpvt);

}  // namespace vxKilnBase::linpack
