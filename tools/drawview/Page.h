// The page, as tools/drawview/page builds it.
#pragma once

#include <string_view>

namespace drawview {

/// HTML. In a build without npm a notice that says so, without a place for frames.
extern const std::string_view kPage;

}  // namespace drawview
