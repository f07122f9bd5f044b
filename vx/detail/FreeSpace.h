// The parts of a file that nobody uses.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace vxOS::detail {

/// Neighbouring parts are one part. A call costs O(log n) of n parts, but for `total`.
class FreeSpace {
 public:
  /// Takes `bytes` out of the smallest part that has so many. Returns their offset.
  std::optional<std::uint64_t> take(std::uint64_t bytes);

  /// Adds a part. Without memory to note it, the part is forgotten: it is then used by nobody.
  void give(std::uint64_t offset, std::uint64_t bytes) noexcept;

  void clear() noexcept;

  /// The bytes in all parts, in O(n).
  std::uint64_t total() const;
  /// The bytes in the part that ends at `offset`.
  std::uint64_t endingAt(std::uint64_t offset) const;

 private:
  using Parts = std::map<std::uint64_t, std::uint64_t>;

  Parts::iterator remove(Parts::iterator part) noexcept;

  Parts parts_;                                               // bytes by offset
  std::set<std::pair<std::uint64_t, std::uint64_t>> bySize_;  // bytes and offset
};

}  // namespace vxOS::detail
