#include <new>
#include <vector>

#include <kilnbase/util/DS/detail/Kind.h>

namespace {

using vxKilnBase::detail::fail;
using vxKilnBase::detail::Gap;
using vxKilnBase::detail::Slot;

using Slots = std::vector<Slot>;

struct Array {
  static constexpr int kType = DS_ARRAY;

  static Slot* first(const void* data) { return isEmpty(data) ? nullptr : &slots(data).front(); }
  static Slot* last(const void* data) { return isEmpty(data) ? nullptr : &slots(data).back(); }

  static Slot* next(const void* data, Slot* slot) {
    return slot != last(data) ? slot + 1 : nullptr;
  }

  static Slot* previous(const void* data, Slot* slot) {
    return slot != first(data) ? slot - 1 : nullptr;
  }

  static void* make() { return new (std::nothrow) Slots; }

  static bool insert(void* data, Gap gap, void* item) {
    const auto place = gap.after != nullptr ? iteratorAt(data, gap.after) : slots(data).end();
    try {
      slots(data).insert(place, Slot{item});
      return true;
    } catch (const std::bad_alloc&) {
      return false;
    }
  }

  static Slot* remove(void* data, Slot*, Slot* slot, Slot* later) {
    slots(data).erase(iteratorAt(data, slot));
    return later != nullptr ? later - 1 : nullptr;
  }

  static void free(void* data) { delete static_cast<Slots*>(data); }

 private:
  static Slots& slots(const void* data) { return *static_cast<Slots*>(const_cast<void*>(data)); }
  static bool isEmpty(const void* data) { return data == nullptr || slots(data).empty(); }

  static Slots::iterator iteratorAt(void* data, Slot* slot) {
    return slots(data).begin() + (slot - slots(data).data());
  }
};

}  // namespace

void* Ds_array_allocate(DS_Structure*, StatusCode* status) {
  void* slots = Array::make();
  if (slots == nullptr) return fail(status, MR_MEMORY_FAULT);
  return slots;
}

DS_DEFINE_KIND(array, Array, Ds_array_allocate)
