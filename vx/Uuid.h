// Universally unique identifiers.
#pragma once

#include <array>
#include <cstdint>

#include <vx/String.h>
#include <vx/export.h>

namespace vxOS {

/// A random identifier of 128 bits (RFC 4122, version 4), from the system's generator of random
/// numbers.
class VX_API Uuid {
 public:
  /// Throws std::system_error when the system refuses, which a sandbox can make happen.
  static Uuid generate();

  /// 36 characters in lower case, such as "0b51a8a0-5c1e-4d8f-9a55-3a1c2f0de6b7".
  vxString::CString asString() const;

 private:
  Uuid() = default;
  std::array<std::uint8_t, 16> bytes_ = {};
};

}  // namespace vxOS
