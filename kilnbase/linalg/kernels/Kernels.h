// The inner loops of the numeric library, compiled for several instruction sets.
//
// Every source in this folder is compiled for the x86-64 baseline, for AVX2 with FMA and for
// AVX-512, each time into the namespace that KILN_ISA names; the table that fits the processor is
// chosen when the library is loaded. The environment variable KILNBASE_KERNELS ("baseline", "avx2",
// "avx512") asks for a lesser set, which is how the tests reach all of them.
//
// Rules of the folder: vectors are written with the compiler's vector extension (Simd.h), never
// with an instruction set's own names; nothing from another header that could be emitted out of
// line (a function compiled for AVX-512 must not become the one that the linker keeps for
// everybody). Matrices are column-major; a leading dimension `ld` is the distance between columns.
// Sums use several accumulators; no kernel allocates.
#pragma once

#include <kilnbase/linalg/kernels/Bidiagonal.h>
#include <kilnbase/linalg/kernels/Cholesky.h>
#include <kilnbase/linalg/kernels/Dense.h>
#include <kilnbase/linalg/kernels/Elements.h>
#include <kilnbase/linalg/kernels/Householder.h>
#include <kilnbase/linalg/kernels/Rotations.h>

namespace vxKilnBase::kernels {

struct Kernels {
  const char* name;   // "baseline", "avx2" or "avx512"
  int vectorDoubles;  // doubles in a register
  const BidiagonalKernels* bidiagonal;
  const CholeskyKernels* cholesky;
  const DenseKernels* dense;
  const HouseholderKernels* householder;
  const RotationKernels* rotations;
  const ElementKernels<double>* doubles;
  const ElementKernels<int>* ints;
  const ElementKernels<signed char>* schars;
};

/// The kernels for this processor; the baseline ones until the library has been initialised.
extern const Kernels* chosen;
inline const Kernels& active() {
  return *chosen;
}

/// Its element kernels for one element type.
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
