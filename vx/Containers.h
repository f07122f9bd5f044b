// Containers of the interfaces between libraries.
#pragma once

#include <vector>

namespace vx {

template <class T>
using vector = std::vector<T>;

}  // namespace vx
