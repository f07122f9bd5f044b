#include <array>
#include <cstdint>
#include <span>

#include <vx/detail/paths.h>
#include <vx/os/Random.h>

vxString::CString vxOS::detail::randomName(std::size_t length) {
  // 32 characters, none of which is another one's capital: some systems take capitals for the same.
  constexpr std::string_view kCharacters = "abcdefghijklmnopqrstuvwxyz234567";
  std::array<std::uint8_t, 256> bytes;
  const auto used = std::span(bytes).first(length);
  random::fill(used);
  vxString::CString name;
  for (const std::uint8_t byte : used) name += kCharacters[byte % kCharacters.size()];
  return name;
}
