#include <vx/LocalTime.h>

bool vxOS::localTime(std::time_t time, std::tm& fields) noexcept {
  return localtime_r(&time, &fields) != nullptr;
}
