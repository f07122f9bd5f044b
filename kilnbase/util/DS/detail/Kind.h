// The methods of a kind of structure, made from the operations of its storage.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <span>
#include <utility>

#include <kilnbase/util/DS/detail/Callback.h>
#include <kilnbase/util/DS/ds_structures.h>

namespace vxKilnBase::detail {

// A position of the built-in kinds points to a slot, which is the base of the nodes.
struct Slot {
  void* item;
};

// The place between two neighbours; null for the neighbour that is missing at an end.
struct Gap {
  Slot* before;
  Slot* after;
};

// A class of static functions over the `data` of a structure; null data is an empty storage.
template <class S>
concept KindStorage = requires(void* data, const void* view, Slot* slot, Gap gap, void* item) {
  { S::kType } -> std::convertible_to<int>;
  // Null in an empty storage.
  { S::first(view) } -> std::same_as<Slot*>;
  { S::last(view) } -> std::same_as<Slot*>;
  // The data is not null.
  { S::count(view) } -> std::same_as<std::size_t>;
  // Null behind the last slot.
  { S::next(view, slot) } -> std::same_as<Slot*>;
  // New data, or null when there is no memory.
  { S::make() } -> std::same_as<void*>;
  // False when there is no memory. The data is not null.
  { S::insert(data, gap, item) } -> std::same_as<bool>;
  // Removes the second slot; the first is its predecessor. Returns where the third slot, which
  // comes later or is null, is after the removal.
  { S::remove(data, slot, slot, slot) } -> std::same_as<Slot*>;
  // Frees the data with all slots.
  S::free(data);
};

// Null before the first slot.
template <class S>
concept GoesBackward = requires(const void* view, Slot* slot) {
  { S::previous(view, slot) } -> std::same_as<Slot*>;
};

// Finds the gap that `gapInOrder` finds, in less time. The data is not null.
template <class S>
concept FindsPlace = requires(void* data, DS_Comparator comparator, void* item) {
  { S::place(data, comparator, item) } -> std::same_as<Gap>;
};

// Is told that items have changed places, and which comparator orders them now, or null for none.
template <class S>
concept NotesOrder = requires(Slot* slot, DS_Comparator comparator) {
  S::reordered(slot, comparator);
};

// Has its slots one behind the other, the first one first.
template <class S>
concept IsOneRow = S::kIsOneRow;

// Finds the first slot whose item matches, in less time than by `next`.
template <class S, class Predicate>
concept SearchesSlots = requires(const void* view, Predicate matches) {
  { S::firstWhere(view, matches) } -> std::same_as<Slot*>;
};

// The gap in front of the first item for which the comparator returns anything but exactly 1. The
// comparators that always give the same answer need not be asked.
template <class Storage>
Gap gapInOrder(const void* data, DS_Comparator comparator, void* item) {
  if (comparator == nullptr || comparator == Ds_fifo_comparator) {
    return {Storage::last(data), nullptr};
  }
  Gap gap{nullptr, Storage::first(data)};
  if (comparator == Ds_filo_comparator) return gap;
  const Slot added{item};
  while (gap.after != nullptr && comparator(&added, gap.after) == 1) {
    gap = {gap.after, Storage::next(data, gap.after)};
  }
  return gap;
}

template <KindStorage Storage>
struct Kind {
  static int walk(const DS_Structure* s, DS_WalkFn fn, void* user, int limit, int direction,
                  StatusCode* status) {
    const bool backward = direction == 1;
    if (s == nullptr || fn == nullptr || Storage::first(s->data) == nullptr ||
        (direction != 0 && !backward) || (backward && limit != -1)) {
      return fail(status, MR_ARGUMENT_ERROR);
    }
    bool allWell = true;
    Slot* slot = backward ? lastVisible(*s) : firstVisible(*s);
    for (int visits = 0; slot != nullptr && (limit == -1 || visits < limit); ++visits) {
      allWell = visit(fn, slot->item, user, status) && allWell;
      slot = backward ? previousVisible(*s, slot) : nextVisible(*s, slot);
    }
    if (!allWell) return fail(status, MR_WALK_TERMINATED);
    return 1;
  }

  static int enumerate(const DS_Structure* s, StatusCode* status) {
    if (s == nullptr) {
      fail(status, MR_ARGUMENT_ERROR);
      return -1;
    }
    int count = 0;
    forEachVisible(*s, [&](Slot*) { return ++count; });
    return count;
  }

  static int add(DS_Structure* s, void* item, StatusCode* status) {
    if (s == nullptr) return fail(status, MR_ARGUMENT_ERROR);
    if (s->filter != nullptr && s->filter(item) == 0) return fail(status, MR_ITEM_FILTERED);
    if (s->data == nullptr) s->data = Storage::make();
    if (s->data == nullptr || !Storage::insert(s->data, place(*s, item), item)) {
      return fail(status, MR_MEMORY_FAULT);
    }
    if (s->comparator == nullptr) fail(status, MR_CANNOT_SORT);
    if (status == nullptr || *status == MR_CANNOT_SORT) s->ordered = 0;
    return 1;
  }

  static DS_Position remove(DS_Structure* s, void* item, DS_FreeFn freeItem, void* user,
                            StatusCode* status) {
    if (s == nullptr) return fail(status, MR_ARGUMENT_ERROR);
    Slot* before = nullptr;
    Slot* slot = Storage::first(s->data);
    while (slot != nullptr && !(slot->item == item && shows(*s, slot))) {
      before = slot;
      slot = Storage::next(s->data, slot);
    }
    if (slot == nullptr) return fail(status, MR_ITEM_NOT_FOUND);
    Slot* const later = nextVisible(*s, slot);
    if (freeItem != nullptr) dispose(freeItem, slot, user);
    return Storage::remove(s->data, before, slot, later);
  }

  static int sort(DS_Structure* s, StatusCode* status) {
    if (s == nullptr || Storage::first(s->data) == nullptr) return fail(status, MR_ARGUMENT_ERROR);
    if (s->comparator == nullptr) return fail(status, MR_CANNOT_SORT);
    if (!sortItems(s->data, s->comparator)) return fail(status, MR_MEMORY_FAULT);
    noteOrder(Storage::first(s->data), s->comparator);
    s->ordered = 1;
    return 1;
  }

  static void* merge(const DS_Structure* a, const DS_Structure* b, StatusCode* status) {
    const DS_Structure* model = a != nullptr ? a : b;
    if (lacksMethods(model) || (b != nullptr && lacksMethods(b))) {
      return fail(status, MR_ARGUMENT_ERROR);
    }
    if (b != nullptr && b->methods->merge != model->methods->merge) {
      return fail(status, MR_INCOMPATIBILITY);
    }
    return build(
        *model, model->filter,
        [&](DS_Structure& result) {
          const auto add = [&](Slot* slot) {
            return result.methods->add(&result, slot->item, status) != 0;
          };
          return (a == nullptr || forEachVisible(*a, add)) &&
                 (b == nullptr || forEachVisible(*b, add));
        },
        status);
  }

  static DS_Position find(const DS_Structure* s, DS_MatchFn match, const void* user,
                          StatusCode* status) {
    if (s == nullptr || (match == nullptr && user == nullptr)) {
      return fail(status, MR_ARGUMENT_ERROR);
    }
    if (match == nullptr) return findItem(*s, user, status);
    return findWhere(
        *s, [=](const void* item) { return call(match, item, user) != 0; }, status);
  }

  static void* difference(const DS_Structure* a, const DS_Structure* b, StatusCode* status) {
    return select(a, b, false, status);
  }

  static void* intersect(const DS_Structure* a, const DS_Structure* b, StatusCode* status) {
    return select(a, b, true, status);
  }

  static int containsItem(const DS_Structure* s, const void* item, StatusCode* status) {
    if (s == nullptr) return fail(status, MR_ARGUMENT_ERROR);
    return findItem(*s, item, status) != nullptr;
  }

  static void* getData(DS_Position position, StatusCode* status) {
    if (position == nullptr) return fail(status, MR_ARGUMENT_ERROR);
    return static_cast<Slot*>(position)->item;
  }

  static void setData(DS_Position position, void* item, StatusCode* status) {
    if (position == nullptr) {
      fail(status, MR_ARGUMENT_ERROR);
      return;
    }
    Slot* const slot = static_cast<Slot*>(position);
    slot->item = item;
    noteOrder(slot, nullptr);
  }

  static void* duplicate(const DS_Structure* s, DS_CopyFn copy, void* user, StatusCode* status) {
    if (lacksMethods(s)) return fail(status, MR_ARGUMENT_ERROR);
    return build(
        *s, nullptr,
        [&](DS_Structure& result) {
          return forEachVisible(*s, [&](Slot* slot) {
            void* item = copy != nullptr ? call(copy, slot->item, user) : slot->item;
            return result.methods->add(&result, item, status) != 0;
          });
        },
        status);
  }

  static DS_Position head(const DS_Structure* s, StatusCode* status) {
    if (s == nullptr) return fail(status, MR_ARGUMENT_ERROR);
    return firstVisible(*s);
  }

  static DS_Position tail(const DS_Structure* s, StatusCode* status) {
    if (s == nullptr) return fail(status, MR_ARGUMENT_ERROR);
    if (Storage::last(s->data) == nullptr) return fail(status, MR_UNEXPECTED_NULL_STRUCTURE);
    return lastVisible(*s);
  }

  static DS_Position next(const DS_Structure* s, DS_Position position, StatusCode* status) {
    if (s == nullptr || position == nullptr) return fail(status, MR_ARGUMENT_ERROR);
    return nextVisible(*s, static_cast<Slot*>(position));
  }

  static DS_Position prev(const DS_Structure* s, DS_Position position, StatusCode* status) {
    if (s == nullptr || position == nullptr) return fail(status, MR_ARGUMENT_ERROR);
    return previousVisible(*s, static_cast<Slot*>(position));
  }

  static int destructor(DS_Structure* s, DS_FreeFn freeItem, void* user, StatusCode* status) {
    if (s == nullptr) return fail(status, MR_ARGUMENT_ERROR);
    if (freeItem != nullptr) {
      for (Slot* slot = Storage::first(s->data); slot != nullptr;
           slot = Storage::next(s->data, slot)) {
        dispose(freeItem, slot, user);
      }
    }
    Storage::free(std::exchange(s->data, nullptr));
    return 1;
  }

  // The first visible item for which `matches` returns true.
  template <class Predicate>
  static Slot* findWhere(const DS_Structure& s, Predicate matches, StatusCode* status) {
    Slot* const slot = firstMatch(s, matches);
    if (slot == nullptr) fail(status, MR_ITEM_NOT_FOUND);
    return slot;
  }

 private:
  static bool shows(const DS_Structure& s, Slot* slot) {
    return s.filter == nullptr || s.filter(slot->item) != 0;
  }

  static Slot* firstVisible(const DS_Structure& s) {
    Slot* const slot = Storage::first(s.data);
    return slot == nullptr || shows(s, slot) ? slot : nextVisible(s, slot);
  }

  static Slot* lastVisible(const DS_Structure& s) {
    Slot* const slot = Storage::last(s.data);
    return slot == nullptr || shows(s, slot) ? slot : previousVisible(s, slot);
  }

  static Slot* nextVisible(const DS_Structure& s, Slot* slot) {
    do slot = Storage::next(s.data, slot);
    while (slot != nullptr && !shows(s, slot));
    return slot;
  }

  static Slot* previousVisible(const DS_Structure& s, Slot* slot) {
    if constexpr (GoesBackward<Storage>) {
      do slot = Storage::previous(s.data, slot);
      while (slot != nullptr && !shows(s, slot));
      return slot;
    } else {
      Slot* found = nullptr;
      for (Slot* at = Storage::first(s.data); at != nullptr && at != slot;
           at = Storage::next(s.data, at)) {
        if (shows(s, at)) found = at;
      }
      return found;
    }
  }

  // Calls `fn` for each visible slot until a call returns 0 or false; returns whether none did.
  template <class Fn>
  static bool forEachVisible(const DS_Structure& s, Fn fn) {
    Slot* slot = firstVisible(s);
    while (slot != nullptr && fn(slot)) slot = nextVisible(s, slot);
    return slot == nullptr;
  }

  template <class Predicate>
  static Slot* firstMatch(const DS_Structure& s, Predicate matches) {
    if constexpr (SearchesSlots<Storage, Predicate>) {
      if (s.filter == nullptr) return Storage::firstWhere(s.data, matches);
    }
    Slot* slot = firstVisible(s);
    while (slot != nullptr && !matches(slot->item)) slot = nextVisible(s, slot);
    return slot;
  }

  static Slot* findItem(const DS_Structure& s, const void* wanted, StatusCode* status) {
    return findWhere(
        s, [=](const void* item) { return item == wanted; }, status);
  }

  static int visit(DS_WalkFn fn, void* item, void* user, StatusCode* status) {
    using ShortFn = int (*)(void*, StatusCode*);
    return user != nullptr ? fn(item, user, status) : functionCast<ShortFn>(fn)(item, status);
  }

  static void dispose(DS_FreeFn freeItem, Slot* slot, void* user) {
    call(freeItem, static_cast<DS_Position>(slot), user);
  }

  static Gap place(const DS_Structure& s, void* item) {
    if constexpr (FindsPlace<Storage>) {
      return Storage::place(s.data, s.comparator, item);
    } else {
      return gapInOrder<Storage>(s.data, s.comparator, item);
    }
  }

  static void noteOrder(Slot* slot, DS_Comparator comparator) {
    if constexpr (NotesOrder<Storage>) Storage::reordered(slot, comparator);
  }

  static bool sortItems(void* data, DS_Comparator comparator) {
    const std::size_t count = Storage::count(data);
    if constexpr (IsOneRow<Storage>) {
      std::qsort(Storage::first(data), count, sizeof(Slot), comparator);
      return true;
    } else {
      return sortApart(data, count, comparator);
    }
  }

  // All slots in order. Goes from both ends at once where the storage goes backward, so that the
  // processor waits for two links at a time.
  static void collect(void* data, std::span<Slot*> slots) {
    Slot* front = Storage::first(data);
    Slot* back = Storage::last(data);
    for (std::size_t i = 0, end = slots.size(); i < end; front = Storage::next(data, front)) {
      slots[i++] = front;
      if constexpr (GoesBackward<Storage>) {
        slots[--end] = back;
        back = Storage::previous(data, back);
      }
    }
  }

  // Looks for the slots only once, since finding the next of many nodes waits for memory.
  static bool sortApart(void* data, std::size_t count, DS_Comparator comparator) {
    const std::unique_ptr<Slot*[]> slots(new (std::nothrow) Slot*[count]);
    const std::unique_ptr<Slot[]> items(new (std::nothrow) Slot[count]);
    if (slots == nullptr || items == nullptr) return false;
    collect(data, {slots.get(), count});
    for (std::size_t i = 0; i < count; ++i) items[i] = *slots[i];
    std::qsort(items.get(), count, sizeof(Slot), comparator);
    for (std::size_t i = 0; i < count; ++i) *slots[i] = items[i];
    return true;
  }

  // The storage of a structure like `model` after `fill`. Null, with a code, when `fill` fails.
  template <class Fill>
  static void* build(const DS_Structure& model, DS_Filter filter, Fill fill, StatusCode* status) {
    DS_Structure result{1, nullptr, model.comparator, filter, model.methods};
    if (!fill(result)) {
      if (status != nullptr && *status == MR_NO_ERROR) *status = MR_UNKNOWN;
      destructor(&result, nullptr, nullptr, ignored());
    }
    return result.data;
  }

  // The visible items of `a` that `b` contains, or those that `b` does not contain.
  static void* select(const DS_Structure* a, const DS_Structure* b, bool contained,
                      StatusCode* status) {
    if (lacksMethods(a) || lacksMethods(b)) return fail(status, MR_ARGUMENT_ERROR);
    return build(
        *a, nullptr,
        [&](DS_Structure& result) {
          return forEachVisible(*a, [&](Slot* slot) {
            const bool isThere = b->methods->contains_item(b, slot->item, ignored()) != 0;
            return isThere != contained || result.methods->add(&result, slot->item, status) != 0;
          });
        },
        status);
  }
};

}  // namespace vxKilnBase::detail

// X(kind, Storage, result, name of the method, member of Kind, parameters, arguments) for the
// methods that Kind has, in the order of DS_Methods.
#define DS_EACH_METHOD(X, kind, Storage)                                                          \
  X(kind, Storage, int, walk, walk,                                                               \
    (const DS_Structure* s, DS_WalkFn fn, void* user, int limit, int direction,                   \
     StatusCode* status),                                                                         \
    (s, fn, user, limit, direction, status))                                                      \
  X(kind, Storage, int, enumerate, enumerate, (const DS_Structure* s, StatusCode* status),        \
    (s, status))                                                                                  \
  X(kind, Storage, int, add, add, (DS_Structure * s, void* item, StatusCode* status),             \
    (s, item, status))                                                                            \
  X(kind, Storage, DS_Position, remove, remove,                                                   \
    (DS_Structure * s, void* item, DS_FreeFn fn, void* user, StatusCode* status),                 \
    (s, item, fn, user, status))                                                                  \
  X(kind, Storage, int, sort, sort, (DS_Structure * s, StatusCode * status), (s, status))         \
  X(kind, Storage, void*, merge, merge,                                                           \
    (const DS_Structure* a, const DS_Structure* b, StatusCode* status), (a, b, status))           \
  X(kind, Storage, DS_Position, find, find,                                                       \
    (const DS_Structure* s, DS_MatchFn fn, const void* user, StatusCode* status),                 \
    (s, fn, user, status))                                                                        \
  X(kind, Storage, void*, difference, difference,                                                 \
    (const DS_Structure* a, const DS_Structure* b, StatusCode* status), (a, b, status))           \
  X(kind, Storage, void*, intersect, intersect,                                                   \
    (const DS_Structure* a, const DS_Structure* b, StatusCode* status), (a, b, status))           \
  X(kind, Storage, int, contains_item, containsItem,                                              \
    (const DS_Structure* s, const void* item, StatusCode* status), (s, item, status))             \
  X(kind, Storage, void*, get_data, getData, (DS_Position at, StatusCode * status), (at, status)) \
  X(kind, Storage, void, set_data, setData, (DS_Position at, void* item, StatusCode* status),     \
    (at, item, status))                                                                           \
  X(kind, Storage, void*, duplicate, duplicate,                                                   \
    (const DS_Structure* s, DS_CopyFn fn, void* user, StatusCode* status), (s, fn, user, status)) \
  X(kind, Storage, DS_Position, head, head, (const DS_Structure* s, StatusCode* status),          \
    (s, status))                                                                                  \
  X(kind, Storage, DS_Position, tail, tail, (const DS_Structure* s, StatusCode* status),          \
    (s, status))                                                                                  \
  X(kind, Storage, DS_Position, next, next,                                                       \
    (const DS_Structure* s, DS_Position at, StatusCode* status), (s, at, status))                 \
  X(kind, Storage, DS_Position, prev, prev,                                                       \
    (const DS_Structure* s, DS_Position at, StatusCode* status), (s, at, status))                 \
  X(kind, Storage, int, destructor, destructor,                                                   \
    (DS_Structure * s, DS_FreeFn fn, void* user, StatusCode* status), (s, fn, user, status))

#define DS_DEFINE_METHOD(kind, Storage, Result, name, member, parameters, arguments) \
  Result Ds_##kind##_##name parameters {                                             \
    return vxKilnBase::detail::Kind<Storage>::member arguments;                      \
  }

#define DS_METHOD_NAME(kind, Storage, Result, name, member, parameters, arguments) \
  Ds_##kind##_##name,

// Defines the exported methods of a kind and the table of them.
#define DS_DEFINE_KIND(kind, Storage, allocate)                                            \
  DS_EACH_METHOD(DS_DEFINE_METHOD, kind, Storage)                                          \
  int Ds_##kind##_get_type() {                                                             \
    return Storage::kType;                                                                 \
  }                                                                                        \
  const DS_Methods* Ds_##kind##_get_methods() {                                            \
    static constexpr DS_Methods kMethods{                                                  \
        DS_EACH_METHOD(DS_METHOD_NAME, kind, Storage) allocate, Ds_##kind##_get_type, {}}; \
    return &kMethods;                                                                      \
  }
