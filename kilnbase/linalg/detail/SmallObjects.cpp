#include <new>

#include <kilnbase/linalg/detail/SmallObjects.h>

namespace vxKilnBase::detail {

namespace {

constexpr std::size_t kLargestCached = 10;
constexpr int kCacheDepth = 5;

struct Cache {
  void* objects[kCacheDepth];
  int count;
};

constinit Cache caches[kLargestCached / 2] = {};

// The cache of an object of `size` bytes, or null for sizes that are not cached.
Cache* cacheFor(std::size_t size) {
  const std::size_t rounded = size + size % 2;
  return rounded >= 2 && rounded <= kLargestCached ? &caches[rounded / 2 - 1] : nullptr;
}

}  // namespace

void* takeSmallObject(std::size_t size) noexcept {
  Cache* cache = cacheFor(size);
  if (cache != nullptr && cache->count > 0) return cache->objects[--cache->count];
  return ::operator new(size + size % 2, std::nothrow);
}

void releaseSmallObject(void* object, std::size_t size) noexcept {
  Cache* cache = cacheFor(size);
  if (cache != nullptr && cache->count < kCacheDepth) {
    cache->objects[cache->count++] = object;
  } else {
    ::operator delete(object);
  }
}

}  // namespace vxKilnBase::detail
