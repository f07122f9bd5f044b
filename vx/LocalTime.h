// The time of day where the user is.
#pragma once

#include <ctime>

#include <vx/export.h>

namespace vxOS {

/// Takes a time apart into the fields of the local calendar. False, with `fields` unspecified, for
/// a time that the system cannot convert. Other threads may convert times meanwhile.
VX_API bool localTime(std::time_t time, std::tm& fields) noexcept;

}  // namespace vxOS
