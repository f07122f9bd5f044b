// The messages of the traces in the tests.
#pragma once

#include <cstdint>
#include <string>

namespace kilntest {

// A message of a random length, the same one for the same number.
inline std::string traceMessage(std::uint64_t number) {
  const auto length = number * 0x9e3779b97f4a7c15 >> 56;  // 0 to 255
  std::string message = std::to_string(number);
  message.append(length % 200, static_cast<char>('a' + number % 26));
  return message;
}

}  // namespace kilntest
