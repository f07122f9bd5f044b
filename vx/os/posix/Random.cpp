#include <cerrno>
#include <system_error>
#include <unistd.h>

#include <vx/os/Random.h>

void vxOS::random::fill(std::span<std::uint8_t> bytes) {
  if (getentropy(bytes.data(), bytes.size()) != 0)
    throw std::system_error(errno, std::generic_category(), "no random numbers");
}
