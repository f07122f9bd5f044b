#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include <kilnbase/detail/assert.h>
#include <kilnbase/util/mr_array.h>

namespace {

std::size_t bytes(const MR_Array& array, std::int32_t elements) {
  return static_cast<std::size_t>(elements) * static_cast<std::size_t>(array.elementSize);
}

// Gives the array a buffer of n + growth elements, when that is more than the array has. Returns
// the replaced buffer, which the caller frees, or null.
void* grow(MR_Array& array, int n) {
  const std::int64_t count = std::int64_t{n} + array.growth;
  if (count <= array.count || count > std::numeric_limits<std::int32_t>::max()) return nullptr;
  void* const grown = std::calloc(static_cast<std::size_t>(count), bytes(array, 1));
  if (!grown) return nullptr;
  void* const old = array.elements;
  if (old) std::memcpy(grown, old, bytes(array, array.count));
  array.elements = grown;
  array.count = static_cast<std::int32_t>(count);
  return old;
}

}  // namespace

MR_Array* MR_array_new(int element_size, int start_count, int growth) {
  KILN_ASSERT(element_size > 0 && start_count >= 0 && growth >= 0);
  auto* array = static_cast<MR_Array*>(std::malloc(sizeof(MR_Array)));
  if (!array) return nullptr;
  *array = {0, element_size, growth, nullptr};
  MR_array_size(array, start_count);
  if (array->count < start_count) MR_array_free(&array);
  return array;
}

void MR_array_size(MR_Array* array, int n) {
  if (array && n > array->count) std::free(grow(*array, n));
}

void* MR_array_get(const MR_Array* array, int i) {
  if (!array || i < 0 || i >= array->count) return nullptr;
  return static_cast<std::byte*>(array->elements) + bytes(*array, i);
}

void MR_array_put(MR_Array* array, int i, const void* element) {
  if (!array || !element) return;
  void* const old = i >= array->count ? grow(*array, i) : nullptr;
  void* const place = MR_array_get(array, i);
  KILN_ASSERT(i >= 0 && (place || array->growth != 0));
  if (place) std::memmove(place, element, bytes(*array, 1));
  std::free(old);
}

void MR_array_free(MR_Array** array) {
  if (!array || !*array) return;
  std::free((*array)->elements);
  std::free(*array);
  *array = nullptr;
}
