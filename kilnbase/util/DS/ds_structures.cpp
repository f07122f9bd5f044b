#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include <kilnbase/util/DS/detail/Callback.h>
#include <kilnbase/util/DS/ds_structures.h>
#include <kilnbase/util/DS/mr_register.h>
#include <vx/Memory.h>
#include <vx/Report.h>

using vxKilnBase::detail::addressOf;
using vxKilnBase::detail::fail;
using vxKilnBase::detail::ignored;
using vxKilnBase::detail::lacksMethods;
using vxKilnBase::detail::order;

namespace {

constinit DS_Structure* objectTable = nullptr;
constinit DS_Structure* comparators = nullptr;
constinit DS_Structure* filters = nullptr;

// The caller's status, or a stand-in for a null one. Sets it to 0.
class Outcome {
 public:
  explicit Outcome(StatusCode* status) : code_(status != nullptr ? status : &standIn_) {
    *code_ = MR_NO_ERROR;
  }
  Outcome(const Outcome&) = delete;
  Outcome& operator=(const Outcome&) = delete;

  operator StatusCode*() { return code_; }
  bool is(StatusCode code) const { return *code_ == code; }

 private:
  StatusCode standIn_ = MR_NO_ERROR;
  StatusCode* code_;
};

DS_Structure* newHeader(const DS_Structure& content, StatusCode* status, int line,
                        const char* file) {
  void* memory = MA_malloc(sizeof(DS_Structure), line, file);
  if (memory == nullptr) return fail(status, MR_MEMORY_FAULT);
  return new (memory) DS_Structure(content);
}

const DS_Methods* builtInMethods(int kind) {
  switch (kind) {
    case DS_DLIST:
      return Ds_dlist_get_methods();
    case DS_SLIST:
      return Ds_slist_get_methods();
    case DS_BINTREE:
      return Ds_bintree_get_methods();
    case DS_ARRAY:
      return Ds_array_get_methods();
    default:
      return nullptr;
  }
}

const DS_Methods* methodsOf(int kind, StatusCode* status) {
  StatusCode code = MR_NO_ERROR;
  const void* found = MR_get_id_registration(kind, objectTable, &code);
  if (found != nullptr) return static_cast<const DS_Methods*>(found);
  const DS_Methods* methods = builtInMethods(kind);
  if (methods == nullptr) fail(status, code);
  return methods;
}

bool isComplete(const DS_Methods& m) {
  return m.walk && m.enumerate && m.add && m.remove && m.sort && m.merge && m.find &&
         m.difference && m.contains_item && m.get_data && m.set_data && m.duplicate && m.head &&
         m.tail && m.next && m.prev && m.destructor && m.get_type;
}

// A structure like `model` with the storage that `make` returns. Null when `make` fails.
template <class Make>
DS_Structure* resultLike(const DS_Structure& model, Outcome& outcome, Make make) {
  DS_Structure* result = newHeader(model, outcome, __LINE__, __FILE__);
  if (result == nullptr) return nullptr;
  result->data = make();
  if (result->data == nullptr && !outcome.is(MR_NO_ERROR)) {
    MA_free(result);
    return nullptr;
  }
  return result;
}

using Selection = void* (*)(const DS_Structure*, const DS_Structure*, StatusCode*);

// The difference or the intersection, as the slot of the table says.
DS_Structure* select(const DS_Structure* a, const DS_Structure* b, Selection DS_Methods::*slot,
                     StatusCode* status) {
  Outcome outcome(status);
  if (lacksMethods(a) || lacksMethods(b)) return fail(outcome, MR_ARGUMENT_ERROR);
  const Selection selection = a->methods->*slot;
  if (selection != b->methods->*slot || a->comparator != b->comparator) {
    return fail(outcome, MR_INCOMPATIBILITY);
  }
  if (selection == nullptr) return fail(outcome, MR_ARGUMENT_ERROR);
  DS_Structure* result = resultLike(*a, outcome, [&] { return selection(a, b, outcome); });
  if (outcome.is(MR_ITEM_NOT_FOUND)) fail(outcome, MR_NO_ERROR);
  if (result == nullptr) return nullptr;
  const bool sorted = status != nullptr && !outcome.is(MR_CANNOT_SORT);
  result->ordered = sorted && a->ordered != 0 && b->ordered != 0 ? 1 : 0;
  if (result->methods->head(result, ignored()) == nullptr) {
    DS_destructor(&result, nullptr, nullptr, ignored());
  }
  return result;
}

// Registered functions are kept as data pointers.
template <class Fn>
Fn registered(int id, const DS_Structure* registry, StatusCode* status) {
  Outcome outcome(status);
  void* found = MR_get_id_registration(id, registry, outcome);
  if (found == nullptr) return fail(outcome, MR_ITEM_NOT_FOUND);
  return reinterpret_cast<Fn>(found);
}

template <class Fn>
int indexOf(Fn fn, const DS_Structure* registry, StatusCode* status) {
  Outcome outcome(status);
  return MR_get_items_registration_id(reinterpret_cast<void*>(fn), registry, outcome);
}

template <class Fn>
int registerFunction(int id, Fn fn, DS_Structure*& registry, StatusCode* status) {
  Outcome outcome(status);
  return MR_register_item(id, reinterpret_cast<void*>(fn), &registry, outcome);
}

// Puts `fn` into the header's field unless the registry exists and lacks `fn`. Returns the previous
// value of the field.
template <class Fn>
Fn install(Fn& field, Fn fn, const DS_Structure* registry, StatusCode* status) {
  const Fn previous = field;
  if (registry != nullptr && indexOf(fn, registry, ignored()) < 0) {
    fail(status, MR_ITEM_NOT_FOUND);
  } else {
    field = fn;
  }
  return previous;
}

void printMembers(const DS_Structure& structure, DS_PrintFn printItem, void* user,
                  StatusCode* status) {
  const DS_Methods& methods = *structure.methods;
  for (DS_Position position = methods.head(&structure, status); position != nullptr;
       position = methods.next(&structure, position, status)) {
    void* item = methods.get_data(position, status);
    rptDebug(0, "Item %#llx:\n", addressOf(position));
    if (printItem != nullptr) {
      rptDebug(0, ">>>");
      printItem(item, user);
      rptDebug(0, "<<<");
    } else {
      rptDebug(0, "0x%llx\n", addressOf(item));
    }
  }
}

int isNotNull(void* item) {
  return item != nullptr ? 1 : 0;
}

void* itemAt(const void* slot) {
  return *static_cast<void* const*>(slot);
}

}  // namespace

int Ds_register_structure(int id, const DS_Methods* methods, StatusCode* status) {
  Outcome outcome(status);
  if (methods == nullptr) return fail(outcome, MR_ARGUMENT_ERROR);
  if (!isComplete(*methods)) return fail(outcome, MR_INVALID_DATA);
  if (objectTable == nullptr) {
    objectTable = newHeader({1, nullptr, Ds_default_comparator, nullptr, methods}, outcome,
                            __LINE__, __FILE__);
    if (objectTable == nullptr) return 0;
    if (methods->allocate != nullptr) objectTable->data = methods->allocate(objectTable, ignored());
  }
  return MR_register_item(id, const_cast<DS_Methods*>(methods), &objectTable, outcome);
}

DS_Structure* Ds_get_object_table() {
  return objectTable;
}

DS_Structure* DS_create_type(int kind, StatusCode* status, int line, const char* file) {
  Outcome outcome(status);
  DS_Structure* structure =
      newHeader({1, nullptr, Ds_fifo_comparator, nullptr, nullptr}, outcome, line, file);
  if (structure == nullptr) return nullptr;
  structure->methods = methodsOf(kind, outcome);
  if (!lacksMethods(structure) && structure->methods->allocate != nullptr) {
    structure->data = structure->methods->allocate(structure, outcome);
  }
  return structure;
}

int DS_register_comparator(int id, DS_Comparator fn, StatusCode* status) {
  return registerFunction(id, fn, comparators, status);
}

int DS_register_filter(int id, DS_Filter fn, StatusCode* status) {
  return registerFunction(id, fn, filters, status);
}

DS_Comparator DS_get_comparator_function(int id, StatusCode* status) {
  return registered<DS_Comparator>(id, comparators, status);
}

DS_Filter DS_get_filter_function(int id, StatusCode* status) {
  return registered<DS_Filter>(id, filters, status);
}

int DS_get_comparator_index(DS_Comparator fn, StatusCode* status) {
  return indexOf(fn, comparators, status);
}

int DS_get_filter_index(DS_Filter fn, StatusCode* status) {
  return indexOf(fn, filters, status);
}

DS_Comparator DS_set_comparator(DS_Structure* structure, DS_Comparator fn, StatusCode* status) {
  Outcome outcome(status);
  if (structure == nullptr) return fail(outcome, MR_ARGUMENT_ERROR);
  return install(structure->comparator, fn, comparators, outcome);
}

DS_Filter DS_set_filter(DS_Structure* structure, DS_Filter fn, StatusCode* status) {
  Outcome outcome(status);
  if (structure == nullptr) return fail(outcome, MR_ARGUMENT_ERROR);
  structure->ordered = 0;
  return install(structure->filter, fn, filters, outcome);
}

DS_Structure* DS_duplicate(const DS_Structure* structure, DS_CopyFn copy_fn, void* user,
                           StatusCode* status) {
  Outcome outcome(status);
  if (lacksMethods(structure)) return fail(outcome, MR_ARGUMENT_ERROR);
  return resultLike(*structure, outcome, [&] {
    return structure->methods->duplicate(structure, copy_fn, user, outcome);
  });
}

DS_Structure* DS_difference(const DS_Structure* a, const DS_Structure* b, StatusCode* status) {
  return select(a, b, &DS_Methods::difference, status);
}

DS_Structure* DS_intersect(const DS_Structure* a, const DS_Structure* b, StatusCode* status) {
  return select(a, b, &DS_Methods::intersect, status);
}

DS_Structure* DS_merge(const DS_Structure* a, const DS_Structure* b, StatusCode* status) {
  Outcome outcome(status);
  const DS_Structure* model = a != nullptr ? a : b;
  if (lacksMethods(model) || (b != nullptr && lacksMethods(b))) {
    return fail(outcome, MR_ARGUMENT_ERROR);
  }
  if (b != nullptr &&
      (model->methods->merge != b->methods->merge || model->comparator != b->comparator)) {
    return fail(outcome, MR_INCOMPATIBILITY);
  }
  DS_Structure* merged =
      resultLike(*model, outcome, [&] { return model->methods->merge(a, b, outcome); });
  if (merged != nullptr) merged->ordered = merged->comparator != nullptr ? 1 : 0;
  return merged;
}

int DS_remove_unfiltered_items(DS_Structure* structure, DS_Filter keep, DS_FreeFn free_fn,
                               void* user, StatusCode* status) {
  Outcome outcome(status);
  if (lacksMethods(structure)) return fail(outcome, MR_ARGUMENT_ERROR);
  const DS_Filter filter = std::exchange(structure->filter, nullptr);
  const DS_Comparator comparator = std::exchange(structure->comparator, nullptr);
  const DS_Methods& methods = *structure->methods;
  DS_Position position = methods.head(structure, outcome);
  while (position != nullptr) {
    void* item = methods.get_data(position, outcome);
    const bool kept = keep != nullptr && keep(item) != 0;
    position = kept ? methods.next(structure, position, outcome)
                    : methods.remove(structure, item, free_fn, user, outcome);
  }
  structure->filter = filter;
  structure->comparator = comparator;
  return 1;
}

int DS_remove_nulls(DS_Structure* structure, StatusCode* status) {
  return DS_remove_unfiltered_items(structure, isNotNull, nullptr, nullptr, status);
}

int DS_empty_list(DS_Structure* structure, DS_FreeFn free_fn, void* user, StatusCode* status) {
  Outcome outcome(status);
  if (lacksMethods(structure)) return fail(outcome, MR_ARGUMENT_ERROR);
  return structure->methods->destructor(structure, free_fn, user, outcome) != 0 ? 1 : 0;
}

int DS_destructor(DS_Structure** structure, DS_FreeFn free_fn, void* user, StatusCode* status) {
  Outcome outcome(status);
  if (structure == nullptr) return fail(outcome, MR_ARGUMENT_ERROR);
  if (DS_empty_list(*structure, free_fn, user, outcome) == 0) return 0;
  MA_free(std::exchange(*structure, nullptr));
  return 1;
}

int DS_memory_free(void* variable) {
  if (variable == nullptr) return 1;
  void** pointer = static_cast<void**>(variable);
  std::free(std::exchange(*pointer, nullptr));
  return 1;
}

void DS_print(const DS_Structure* structure, DS_PrintFn print_fn, void* user, StatusCode* status) {
  Outcome outcome(status);
  if (structure == nullptr) {
    rptDebug(0, "Null structure\n");
    return;
  }
  rptDebug(0, "Structure 0x%llx\n", addressOf(structure));
  rptDebug(0, ">>>");
  rptDebug(0, "Filter = 0x%llx\n", addressOf(structure->filter));
  rptDebug(0, "Comparator = 0x%llx\n", addressOf(structure->comparator));
  rptDebug(0, "Ordered = %s\n", structure->ordered != 0 ? "TRUE" : "FALSE");
  rptDebug(0, "Filtered Member list =\n");
  rptDebug(0, ">>>");
  if (structure->methods != nullptr) printMembers(*structure, print_fn, user, outcome);
  rptDebug(0, "<<<");
}

void DS_print_structure(const DS_Structure* structure, DS_PrintFn print_fn, void* user,
                        StatusCode* status) {
  DS_print(structure, print_fn, user, status);
}

int Ds_default_comparator(const void* a, const void* b) {
  if (a == nullptr || b == nullptr) return 0;
  return order(addressOf(itemAt(a)), addressOf(itemAt(b)));
}

int Ds_fifo_comparator(const void*, const void*) {
  return 1;
}

int Ds_filo_comparator(const void*, const void*) {
  return -1;
}

int Ds_string_comparator(const void* a, const void* b) {
  if (a == nullptr || b == nullptr) return 0;
  const char* left = static_cast<const char*>(itemAt(a));
  const char* right = static_cast<const char*>(itemAt(b));
  if (left == nullptr || right == nullptr) return 0;
  return order(std::strcmp(left, right), 0);
}

int Ds_string_find(const void* s1, const void* s2) {
  if (s1 == nullptr || s2 == nullptr) return 0;
  return std::strcmp(static_cast<const char*>(s1), static_cast<const char*>(s2)) == 0 ? 1 : 0;
}

int Ds_enumerate(void*, void* counter, StatusCode*) {
  if (counter != nullptr) ++*static_cast<int*>(counter);
  return 1;
}
