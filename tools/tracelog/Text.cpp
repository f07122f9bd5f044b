#include "tools/tracelog/Text.h"

#include <algorithm>

namespace tracelog {

namespace {

// The length of the UTF-8 sequence at the front, 0 for one that is not well-formed. A control
// character beyond ASCII counts as not well-formed.
std::size_t sequenceLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned first = byte(0);
  const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : first >= 0xc2 ? 2 : 0;
  if (length == 0 || first > 0xf4 || text.size() < length) return 0;
  unsigned code = first & (0x7fU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xc0U) != 0x80) return 0;
    code = code << 6 | (byte(i) & 0x3fU);
  }
  constexpr unsigned kLeast[] = {0xa0, 0x800, 0x10000};
  const bool isSurrogate = code >= 0xd800 && code < 0xe000;
  return code >= kLeast[length - 2] && code <= 0x10ffff && !isSurrogate ? length : 0;
}

}  // namespace

std::string nameOf(const std::filesystem::path& path) {
  const std::u8string name = path.u8string();
  return {name.begin(), name.end()};
}

std::string shown(std::string_view text) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string result;
  while (!text.empty()) {
    const auto byte = static_cast<unsigned char>(text.front());
    const std::size_t length = byte >= 0x20 && byte < 0x7f ? 1 : sequenceLength(text);
    if (length == 0)
      result.append({'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]});
    else
      result += text.substr(0, length);
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return result;
}

}  // namespace tracelog
