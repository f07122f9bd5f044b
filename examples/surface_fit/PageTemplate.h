// The page without its data.
#pragma once

#include <string_view>

namespace surfacefit {

/// The text of page.html. The data, a JavaScript object, goes where it says "/*DATA*/".
extern const std::string_view kPageTemplate;

}  // namespace surfacefit
