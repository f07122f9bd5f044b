#include "tools/vxcached/Listing.h"

#include <algorithm>
#include <string_view>

#include <vx/String.h>

namespace vxcached {

namespace {

using vxString::CString;

std::string limitText(std::int64_t limit) {
  return limit > 0 ? std::to_string(limit) : "no limit";
}

// How many bytes at the start of the text are a character of UTF-8 that a terminal shows; 0 for a
// control character (U+0000 to U+001F, U+007F to U+009F) and for what is no UTF-8.
std::size_t shownBytes(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80) return lead < 0x20 || lead == 0x7F ? 0 : 1;
  const std::size_t size = lead < 0xC2   ? 0
                           : lead < 0xE0 ? 2
                           : lead < 0xF0 ? 3
                           : lead < 0xF5 ? 4
                                         : 0;
  if (size == 0 || size > text.size()) return 0;
  const auto isFollower = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; };
  const bool isWhole = std::ranges::all_of(text.substr(1, size - 1), isFollower);
  const bool isControl = lead == 0xC2 && static_cast<unsigned char>(text[1]) < 0xA0;
  return isWhole && !isControl ? size : 0;
}

// A key is any bytes, and a terminal would obey some of them.
std::string printable(std::string_view text) {
  std::string escaped;
  while (!text.empty()) {
    const std::size_t shown = text[0] == '\\' ? 0 : shownBytes(text);
    if (shown == 0)
      escaped += CString::format("\\x%02X", static_cast<unsigned char>(text[0])).view();
    else
      escaped += text.substr(0, shown);
    text.remove_prefix(std::max<std::size_t>(shown, 1));
  }
  return escaped;
}

std::string line(const CacheIndex::Listed& listed, std::int64_t now) {
  const auto& [entry, holders, isCurrent] = listed;
  const std::string age = isCurrent ? std::to_string(now - entry.accessTime) : "-";
  const CString numbers =
      CString::format("%14llu %10s %7llu  ", static_cast<unsigned long long>(entry.facts.size),
                      age.c_str(), static_cast<unsigned long long>(holders));
  return std::string(numbers.view()) + printable(entry.name) + "  " + printable(entry.key) + "\n";
}

}  // namespace

std::string listing(const std::vector<CacheIndex::Listed>& entries, const Limits& limits,
                    std::int64_t now) {
  std::uint64_t bytes = 0;
  for (const auto& each : entries) bytes += each.entry.facts.size;
  std::string text = "files: " + std::to_string(entries.size()) + " of " + limitText(limits.files) +
                     ", bytes: " + std::to_string(bytes) + " of " + limitText(limits.bytes) + "\n";
  if (!entries.empty()) text += "         bytes        age holders  file  key\n";
  for (const auto& each : entries) text += line(each, now);
  return text;
}

}  // namespace vxcached
