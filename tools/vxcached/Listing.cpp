#include "tools/vxcached/Listing.h"

#include <string_view>

#include <vx/String.h>

namespace vxcached {

namespace {

using vxString::CString;

std::string limitText(std::int64_t limit) {
  return limit > 0 ? std::to_string(limit) : "no limit";
}

// A key is any bytes, and a terminal would obey some of them.
std::string printable(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F || c == '\\')
      escaped += CString::format("\\x%02X", byte).view();
    else
      escaped += c;
  }
  return escaped;
}

std::string line(const CacheIndex::Listed& listed, std::int64_t now) {
  const auto& [entry, holds, isCurrent] = listed;
  const std::string age = isCurrent ? std::to_string(now - entry.accessTime) : "-";
  const CString numbers =
      CString::format("%14llu %10s %5llu  ", static_cast<unsigned long long>(entry.facts.size),
                      age.c_str(), static_cast<unsigned long long>(holds));
  return std::string(numbers.view()) + printable(entry.name) + "  " + printable(entry.key) + "\n";
}

}  // namespace

std::string listing(const std::vector<CacheIndex::Listed>& entries, const Limits& limits,
                    std::int64_t now) {
  std::uint64_t bytes = 0;
  for (const auto& each : entries) bytes += each.entry.facts.size;
  std::string text = "files: " + std::to_string(entries.size()) + " of " + limitText(limits.files) +
                     ", bytes: " + std::to_string(bytes) + " of " + limitText(limits.bytes) + "\n";
  if (!entries.empty()) text += "         bytes        age holds  file  key\n";
  for (const auto& each : entries) text += line(each, now);
  return text;
}

}  // namespace vxcached
