#include <cstdlib>
#include <cstring>

#include <kilnbase/linalg/kernels/Kernels.h>

namespace vxKilnBase::kernels {

namespace baseline {
extern const Kernels kernels;
}
namespace avx2 {
extern const Kernels kernels;
}
namespace avx512 {
extern const Kernels kernels;
}

namespace {

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
  if (atMost("baseline") || !supportsAvx2()) return &baseline::kernels;
  if (atMost("avx2") || !supportsAvx512()) return &avx2::kernels;
  return &avx512::kernels;
}

}  // namespace

constinit const Kernels* chosen = &baseline::kernels;

namespace {

[[maybe_unused]] const bool isChosen = [] {
  chosen = choose();
  return true;
}();

}  // namespace

}  // namespace vxKilnBase::kernels
