#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>

#include <kilnbase/util/DS/detail/Kind.h>

namespace {

using vxKilnBase::detail::fail;
using vxKilnBase::detail::Gap;
using vxKilnBase::detail::Slot;

struct Buffer {
  std::size_t count = 0;
  std::size_t capacity = 0;
  Slot* items = nullptr;
};

struct Array {
  static constexpr int kType = DS_ARRAY;
  static constexpr bool kIsOneRow = true;

  static Slot* first(const void* data) { return isEmpty(data) ? nullptr : buffer(data).items; }

  static Slot* last(const void* data) {
    return isEmpty(data) ? nullptr : buffer(data).items + buffer(data).count - 1;
  }

  static std::size_t count(const void* data) { return buffer(data).count; }

  static Slot* next(const void* data, Slot* slot) {
    return slot != last(data) ? slot + 1 : nullptr;
  }

  static Slot* previous(const void* data, Slot* slot) {
    return slot != first(data) ? slot - 1 : nullptr;
  }

  static void* make() { return new (std::nothrow) Buffer; }

  static bool insert(void* data, Gap gap, void* item) {
    Buffer& array = buffer(data);
    const std::ptrdiff_t index = gap.before != nullptr ? gap.before + 1 - array.items : 0;
    const bool isFull = array.items == nullptr || array.count == array.capacity;
    if (isFull && !grow(array)) return false;
    Slot* const slot = array.items + index;
    std::copy_backward(slot, array.items + array.count, array.items + array.count + 1);
    slot->item = item;
    ++array.count;
    return true;
  }

  static Slot* remove(void* data, Slot*, Slot* slot, Slot* later) {
    std::copy(slot + 1, last(data) + 1, slot);
    --buffer(data).count;
    return later != nullptr ? later - 1 : nullptr;
  }

  static void free(void* data) {
    if (data != nullptr) std::free(buffer(data).items);
    delete static_cast<Buffer*>(data);
  }

 private:
  static Buffer& buffer(const void* data) { return *static_cast<Buffer*>(const_cast<void*>(data)); }

  static bool isEmpty(const void* data) { return data == nullptr || buffer(data).count == 0; }

  static bool grow(Buffer& array) {
    constexpr std::size_t kSmallest = 8;
    const std::size_t capacity = std::max(kSmallest, 2 * array.capacity);
    void* items = std::realloc(array.items, capacity * sizeof(Slot));
    if (items == nullptr) return false;
    array.items = static_cast<Slot*>(items);
    array.capacity = capacity;
    return true;
  }
};

}  // namespace

void* Ds_array_allocate(DS_Structure*, StatusCode* status) {
  void* array = Array::make();
  if (array == nullptr) return fail(status, MR_MEMORY_FAULT);
  return array;
}

DS_DEFINE_KIND(array, Array, Ds_array_allocate)
