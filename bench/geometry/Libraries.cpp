#include "geometry/Ways.h"

namespace bench::geometry::BENCH_FLAGS {

std::vector<Library> libraries() {
  return {
      {"", ourWays()},
#ifdef BENCH_HAS_IMATH
      {"Imath", imathWays()},
#endif
#ifdef BENCH_HAS_GLM
      {"GLM", glmWays()},
#endif
#ifdef BENCH_HAS_EIGEN
      {"Eigen", eigenWays()},
#endif
  };
}

}  // namespace bench::geometry::BENCH_FLAGS
