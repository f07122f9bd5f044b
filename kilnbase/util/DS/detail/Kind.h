// The methods of a kind of structure, made from what its storage can do.
//
// A storage is a struct of static functions over the `data` of a structure:
//
//     constexpr int kType;
//     Slot* first(const void* data), last(const void* data)     null when there are no items
//     Slot* next(const void* data, Slot*), previous(const void* data, Slot*)     null at the ends;
//         a storage that only goes forward has no `previous`
//     void* make()     null when there is no memory, as below
//     bool insert(void* data, Gap, void* item)     false when there is no memory
//     Slot* remove(void* data, Slot* before, Slot*, Slot* later)     where `later` is from now on
//     void free(void* data)     with all in it; null too
//
// and, where it can do better than the rest:
//
//     Gap place(void* data, DS_Comparator, void* item)     where an item goes
//     void reordered(Slot*)     tells that items have changed places behind its back
//     Slot* firstWhere(const void* data, Predicate)     the first whose item matches
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

#include <kilnbase/util/DS/detail/Callback.h>
#include <kilnbase/util/DS/ds_structures.h>

namespace vxKilnBase::detail {

// What a position of the built-in kinds points to: the base of the nodes.
struct Slot {
  void* item;
};

// Neighbours between which an item goes; null at the ends.
struct Gap {
  Slot* before;
  Slot* after;
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

template <class Storage>
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
    noteReordered(Storage::first(s->data));
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
    noteReordered(slot);
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
    if constexpr (requires { Storage::previous(s.data, slot); }) {
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

  // Stops where `fn` returns 0 or false; whether it never did.
  template <class Fn>
  static bool forEachVisible(const DS_Structure& s, Fn fn) {
    Slot* slot = firstVisible(s);
    while (slot != nullptr && fn(slot)) slot = nextVisible(s, slot);
    return slot == nullptr;
  }

  template <class Predicate>
  static Slot* firstMatch(const DS_Structure& s, Predicate matches) {
    if constexpr (requires { Storage::firstWhere(s.data, matches); }) {
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
    if constexpr (requires { Storage::place(s.data, s.comparator, item); }) {
      return Storage::place(s.data, s.comparator, item);
    } else {
      return gapInOrder<Storage>(s.data, s.comparator, item);
    }
  }

  static void noteReordered(Slot* slot) {
    if constexpr (requires { Storage::reordered(slot); }) Storage::reordered(slot);
  }

  static bool sortItems(void* data, DS_Comparator comparator) {
    std::size_t count = 0;
    for (Slot* slot = Storage::first(data); slot != nullptr; slot = Storage::next(data, slot)) {
      ++count;
    }
    const std::unique_ptr<Slot[]> items(new (std::nothrow) Slot[count]);
    if (items == nullptr) return false;
    Slot* slot = Storage::first(data);
    for (std::size_t i = 0; i < count; ++i, slot = Storage::next(data, slot)) items[i] = *slot;
    std::qsort(items.get(), count, sizeof(Slot), comparator);
    slot = Storage::first(data);
    for (std::size_t i = 0; i < count; ++i, slot = Storage::next(data, slot)) *slot = items[i];
    return true;
  }

  // The storage of a structure like `model` after `fill`; null, with a code, when that fails.
  template <class Fill>
  static void* build(const DS_Structure& model, DS_Filter filter, Fill fill, StatusCode* status) {
    DS_Structure result{1, nullptr, model.comparator, filter, model.methods};
    if (!fill(result)) {
      if (status != nullptr && *status == MR_NO_ERROR) *status = MR_UNKNOWN;
      destructor(&result, nullptr, nullptr, ignored());
    }
    return result.data;
  }

  // The visible items of `a` that `b` contains, or those that it does not.
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

// Defines the exported methods of a kind.
#define DS_DEFINE_KIND(kind, Storage, allocate)                                                    \
  int Ds_##kind##_walk(const DS_Structure* structure, DS_WalkFn fn, void* user, int limit,         \
                       int direction, StatusCode* status) {                                        \
    return vxKilnBase::detail::Kind<Storage>::walk(structure, fn, user, limit, direction, status); \
  }                                                                                                \
  int Ds_##kind##_enumerate(const DS_Structure* structure, StatusCode* status) {                   \
    return vxKilnBase::detail::Kind<Storage>::enumerate(structure, status);                        \
  }                                                                                                \
  int Ds_##kind##_add(DS_Structure* structure, void* item, StatusCode* status) {                   \
    return vxKilnBase::detail::Kind<Storage>::add(structure, item, status);                        \
  }                                                                                                \
  DS_Position Ds_##kind##_remove(DS_Structure* structure, void* item, DS_FreeFn free_fn,           \
                                 void* user, StatusCode* status) {                                 \
    return vxKilnBase::detail::Kind<Storage>::remove(structure, item, free_fn, user, status);      \
  }                                                                                                \
  int Ds_##kind##_sort(DS_Structure* structure, StatusCode* status) {                              \
    return vxKilnBase::detail::Kind<Storage>::sort(structure, status);                             \
  }                                                                                                \
  void* Ds_##kind##_merge(const DS_Structure* a, const DS_Structure* b, StatusCode* status) {      \
    return vxKilnBase::detail::Kind<Storage>::merge(a, b, status);                                 \
  }                                                                                                \
  DS_Position Ds_##kind##_find(const DS_Structure* structure, DS_MatchFn match, const void* user,  \
                               StatusCode* status) {                                               \
    return vxKilnBase::detail::Kind<Storage>::find(structure, match, user, status);                \
  }                                                                                                \
  void* Ds_##kind##_difference(const DS_Structure* a, const DS_Structure* b, StatusCode* status) { \
    return vxKilnBase::detail::Kind<Storage>::difference(a, b, status);                            \
  }                                                                                                \
  void* Ds_##kind##_intersect(const DS_Structure* a, const DS_Structure* b, StatusCode* status) {  \
    return vxKilnBase::detail::Kind<Storage>::intersect(a, b, status);                             \
  }                                                                                                \
  int Ds_##kind##_contains_item(const DS_Structure* structure, const void* item,                   \
                                StatusCode* status) {                                              \
    return vxKilnBase::detail::Kind<Storage>::containsItem(structure, item, status);               \
  }                                                                                                \
  void* Ds_##kind##_get_data(DS_Position position, StatusCode* status) {                           \
    return vxKilnBase::detail::Kind<Storage>::getData(position, status);                           \
  }                                                                                                \
  void Ds_##kind##_set_data(DS_Position position, void* item, StatusCode* status) {                \
    vxKilnBase::detail::Kind<Storage>::setData(position, item, status);                            \
  }                                                                                                \
  void* Ds_##kind##_duplicate(const DS_Structure* structure, DS_CopyFn copy_fn, void* user,        \
                              StatusCode* status) {                                                \
    return vxKilnBase::detail::Kind<Storage>::duplicate(structure, copy_fn, user, status);         \
  }                                                                                                \
  DS_Position Ds_##kind##_head(const DS_Structure* structure, StatusCode* status) {                \
    return vxKilnBase::detail::Kind<Storage>::head(structure, status);                             \
  }                                                                                                \
  DS_Position Ds_##kind##_tail(const DS_Structure* structure, StatusCode* status) {                \
    return vxKilnBase::detail::Kind<Storage>::tail(structure, status);                             \
  }                                                                                                \
  DS_Position Ds_##kind##_next(const DS_Structure* structure, DS_Position position,                \
                               StatusCode* status) {                                               \
    return vxKilnBase::detail::Kind<Storage>::next(structure, position, status);                   \
  }                                                                                                \
  DS_Position Ds_##kind##_prev(const DS_Structure* structure, DS_Position position,                \
                               StatusCode* status) {                                               \
    return vxKilnBase::detail::Kind<Storage>::prev(structure, position, status);                   \
  }                                                                                                \
  int Ds_##kind##_destructor(DS_Structure* structure, DS_FreeFn free_fn, void* user,               \
                             StatusCode* status) {                                                 \
    return vxKilnBase::detail::Kind<Storage>::destructor(structure, free_fn, user, status);        \
  }                                                                                                \
  int Ds_##kind##_get_type() {                                                                     \
    return Storage::kType;                                                                         \
  }                                                                                                \
  const DS_Methods* Ds_##kind##_get_methods() {                                                    \
    static constexpr DS_Methods kMethods{Ds_##kind##_walk,                                         \
                                         Ds_##kind##_enumerate,                                    \
                                         Ds_##kind##_add,                                          \
                                         Ds_##kind##_remove,                                       \
                                         Ds_##kind##_sort,                                         \
                                         Ds_##kind##_merge,                                        \
                                         Ds_##kind##_find,                                         \
                                         Ds_##kind##_difference,                                   \
                                         Ds_##kind##_intersect,                                    \
                                         Ds_##kind##_contains_item,                                \
                                         Ds_##kind##_get_data,                                     \
                                         Ds_##kind##_set_data,                                     \
                                         Ds_##kind##_duplicate,                                    \
                                         Ds_##kind##_head,                                         \
                                         Ds_##kind##_tail,                                         \
                                         Ds_##kind##_next,                                         \
                                         Ds_##kind##_prev,                                         \
                                         Ds_##kind##_destructor,                                   \
                                         allocate,                                                 \
                                         Ds_##kind##_get_type,                                     \
                                         {}};                                                      \
    return &kMethods;                                                                              \
  }
