#include <cstdlib>
#include <cstring>

#include <kilnbase/linalg/kernels/Kernels.h>

namespace vxKilnBase::kernels {

namespace baseline {
extern const DenseKernels denseKernels;
extern const ElementKernels<double> doubleKernels;
extern const ElementKernels<int> intKernels;
extern const ElementKernels<signed char> scharKernels;
}  // namespace baseline
namespace avx2 {
extern const DenseKernels denseKernels;
extern const ElementKernels<double> doubleKernels;
extern const ElementKernels<int> intKernels;
extern const ElementKernels<signed char> scharKernels;
}  // namespace avx2
namespace avx512 {
extern const DenseKernels denseKernels;
extern const ElementKernels<double> doubleKernels;
extern const ElementKernels<int> intKernels;
extern const ElementKernels<signed char> scharKernels;
}  // namespace avx512

namespace {

constexpr Kernels kBaseline = {"baseline",
                               2,
                               &baseline::denseKernels,
                               &baseline::doubleKernels,
                               &baseline::intKernels,
                               &baseline::scharKernels};
constexpr Kernels kAvx2 = {
    "avx2", 4, &avx2::denseKernels, &avx2::doubleKernels, &avx2::intKernels, &avx2::scharKernels};
constexpr Kernels kAvx512 = {"avx512",
                             8,
                             &avx512::denseKernels,
                             &avx512::doubleKernels,
                             &avx512::intKernels,
                             &avx512::scharKernels};

bool supportsAvx2() {
  return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
}

bool supportsAvx512() {
  return supportsAvx2() && __builtin_cpu_supports("avx512f") &&
         __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
         __builtin_cpu_supports("avx512bw");
}

const Kernels* choose() {
  __builtin_cpu_init();
  const char* request = std::getenv("KILNBASE_KERNELS");
  const auto atMost = [request](const char* name) {
    return request != nullptr && std::strcmp(request, name) == 0;
  };
  if (atMost("baseline") || !supportsAvx2()) return &kBaseline;
  if (atMost("avx2") || !supportsAvx512()) return &kAvx2;
  return &kAvx512;
}

}  // namespace

constinit const Kernels* chosen = &kBaseline;

namespace {

[[maybe_unused]] const bool isChosen = [] {
  chosen = choose();
  return true;
}();

}  // namespace

}  // namespace vxKilnBase::kernels
