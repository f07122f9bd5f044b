#include <iterator>
#include <new>

#include <vx/detail/FreeSpace.h>

namespace vxOS::detail {

std::optional<std::uint64_t> FreeSpace::take(std::uint64_t bytes) {
  const auto smallest = bySize_.lower_bound({bytes, 0});
  if (smallest == bySize_.end()) return std::nullopt;
  const auto [size, offset] = *smallest;
  remove(parts_.find(offset));
  if (size > bytes) give(offset + bytes, size - bytes);
  return offset;
}

void FreeSpace::give(std::uint64_t offset, std::uint64_t bytes) noexcept {
  auto next = parts_.lower_bound(offset);
  if (next != parts_.end() && next->first == offset + bytes) {
    bytes += next->second;
    next = remove(next);
  }
  if (const std::uint64_t before = endingAt(offset); before > 0) {
    offset -= before;
    bytes += before;
    remove(std::prev(next));
  }
  try {
    bySize_.emplace(bytes, offset);
    parts_.emplace(offset, bytes);
  } catch (const std::bad_alloc&) {
    bySize_.erase({bytes, offset});
  }
}

void FreeSpace::clear() noexcept {
  parts_.clear();
  bySize_.clear();
}

std::uint64_t FreeSpace::total() const {
  std::uint64_t sum = 0;
  for (const auto& [offset, bytes] : parts_) sum += bytes;
  return sum;
}

std::uint64_t FreeSpace::endingAt(std::uint64_t offset) const {
  const auto next = parts_.lower_bound(offset);
  if (next == parts_.begin()) return 0;
  const auto& [start, bytes] = *std::prev(next);
  return start + bytes == offset ? bytes : 0;
}

FreeSpace::Parts::iterator FreeSpace::remove(Parts::iterator part) noexcept {
  bySize_.erase({part->second, part->first});
  return parts_.erase(part);
}

}  // namespace vxOS::detail
