#include <vx/Uuid.h>
#include <vx/os/Random.h>

namespace vxOS {

Uuid Uuid::generate() {
  Uuid uuid;
  random::fill(uuid.bytes_);
  uuid.bytes_[6] = static_cast<std::uint8_t>((uuid.bytes_[6] & 0x0F) | 0x40);  // version 4
  uuid.bytes_[8] = static_cast<std::uint8_t>((uuid.bytes_[8] & 0x3F) | 0x80);  // of RFC 4122
  return uuid;
}

vxString::CString Uuid::asString() const {
  constexpr char kDigits[] = "0123456789abcdef";
  vxString::CString text;
  for (std::size_t i = 0; i < bytes_.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += kDigits[bytes_[i] / 16];
    text += kDigits[bytes_[i] % 16];
  }
  return text;
}

}  // namespace vxOS
