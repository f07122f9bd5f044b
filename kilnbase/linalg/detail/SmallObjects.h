// The allocator of block headers and other small records of the numeric library.
#pragma once

#include <cstddef>
#include <cstdlib>

namespace vxKilnBase::detail {

/// The last few blocks of one size that were released.
struct SmallObjectCache {
  static constexpr int kDepth = 5;

  void* objects[kDepth];
  int count;
};

/// Sizes 2, 4, 6, 8 and 10 have a cache each.
inline constexpr std::size_t kLargestCachedObject = 10;
extern SmallObjectCache smallObjectCaches[kLargestCachedObject / 2];

/// The cache of objects of `size` bytes, or null for sizes that are not cached.
inline SmallObjectCache* cacheOfSmallObjects(std::size_t size) noexcept {
  const bool cached = size >= 1 && size <= kLargestCachedObject;
  return cached ? &smallObjectCaches[(size - 1) / 2] : nullptr;
}

/// Takes `size` bytes, rounded up to an even number, aligned for any type; null when there is no
/// memory. Takes from the cache of the size while the cache holds any, else from the heap.
inline void* takeSmallObject(std::size_t size) noexcept {
  SmallObjectCache* cache = cacheOfSmallObjects(size);
  if (cache != nullptr && cache->count > 0) return cache->objects[--cache->count];
  return std::malloc(size <= kLargestCachedObject ? size + size % 2 : size);
}

/// Gives back what `takeSmallObject(size)` returned: to the cache of the size, or to the heap when
/// the cache is full or there is none.
inline void releaseSmallObject(void* object, std::size_t size) noexcept {
  SmallObjectCache* cache = cacheOfSmallObjects(size);
  if (cache != nullptr && cache->count < SmallObjectCache::kDepth) {
    cache->objects[cache->count++] = object;
  } else {
    std::free(object);
  }
}

}  // namespace vxKilnBase::detail
