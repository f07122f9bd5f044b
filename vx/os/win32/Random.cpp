#define _CRT_RAND_S
#include <stdlib.h>
#include <system_error>

#include <vx/os/Random.h>

void vxOS::random::fill(std::span<std::uint8_t> bytes) {
  for (std::uint8_t& byte : bytes) {
    unsigned value;
    const int error = rand_s(&value);
    if (error != 0) throw std::system_error(error, std::generic_category(), "no random numbers");
    byte = static_cast<std::uint8_t>(value);
  }
}
