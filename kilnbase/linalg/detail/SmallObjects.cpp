#include <kilnbase/linalg/detail/SmallObjects.h>

namespace vxKilnBase::detail {

constinit SmallObjectCache smallObjectCaches[kLargestCachedObject / 2] = {};

}  // namespace vxKilnBase::detail
