// The inner loops of the numeric library and the inverse of 4 by 4 matrices, compiled for several
// instruction sets.
//
// Every source of this folder but Kernels.cpp is compiled for the x86-64 baseline, for AVX2 with
// FMA and for AVX-512, each time into the namespace that KILN_ISA names. When the library is
// loaded, it chooses the set that fits the processor. The environment variable KILNBASE_KERNELS
// ("baseline", "avx2", "avx512") asks for a lesser set; this is how the tests run all of them.
//
// Rules of the folder:
//   - Registers are the compiler's vector extension (Simd.h), never an instruction set's own types.
//   - Kernel sources call no inline function of a header outside this folder that the compiler may
//     emit: the linker would keep one copy for everybody, and this could be the one for AVX-512.
//   - Matrices are column-major; the leading dimension `ld` is the distance from one column to the
//     next.
//   - Long sums use several accumulators. No kernel allocates.
//   - Numbers found by measuring stand in Tuning.h.
#pragma once

#include <kilnbase/linalg/kernels/Bidiagonal.h>
#include <kilnbase/linalg/kernels/Cholesky.h>
#include <kilnbase/linalg/kernels/Dense.h>
#include <kilnbase/linalg/kernels/Elements.h>
#include <kilnbase/linalg/kernels/Householder.h>
#include <kilnbase/linalg/kernels/Inverse.h>
#include <kilnbase/linalg/kernels/Lu.h>
#include <kilnbase/linalg/kernels/Rotations.h>
#include <kilnbase/linalg/kernels/Symmetric.h>
#include <kilnbase/linalg/kernels/Tridiagonal.h>

namespace vxKilnBase::kernels {

struct Kernels {
  const char* name;   // "baseline", "avx2" or "avx512"
  int vectorDoubles;  // doubles in a register
  const BidiagonalKernels* bidiagonal;
  const CholeskyKernels* cholesky;
  const DenseKernels* dense;
  const HouseholderKernels* householder;
  const InverseKernels* inverse;
  const LuKernels* lu;
  const RotationKernels* rotations;
  const SymmetricKernels* symmetric;
  const TridiagonalKernels* tridiagonal;
  const ElementKernels<double>* doubles;
  const ElementKernels<int>* ints;
  const ElementKernels<signed char>* schars;
};

/// The kernels for this processor. Until the library has been initialised, those of the baseline.
extern const Kernels* chosen;
inline const Kernels& active() {
  return *chosen;
}

/// The element kernels of the active set for one element type.
template <class T>
const ElementKernels<T>& elements();
template <>
inline const ElementKernels<double>& elements<double>() {
  return *active().doubles;
}
template <>
inline const ElementKernels<int>& elements<int>() {
  return *active().ints;
}
template <>
inline const ElementKernels<signed char>& elements<signed char>() {
  return *active().schars;
}

}  // namespace vxKilnBase::kernels
