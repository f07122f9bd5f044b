// The text of --list.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/vxcached/CacheIndex.h"

namespace vxcached {

/// A line for the limits, a line for each file. Control characters of keys and names are escaped.
std::string listing(const std::vector<CacheIndex::Listed>& entries, const Limits& limits,
                    std::int64_t now);

}  // namespace vxcached
