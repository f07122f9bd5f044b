#include <cstdlib>

#include <kilnbase/util/DS/detail/Callback.h>
#include <kilnbase/util/DS/mr_register.h>

using vxKilnBase::detail::fail;
using vxKilnBase::detail::functionCast;

namespace {

const MR_Registration* entryOf(const void* item) {
  return static_cast<const MR_Registration*>(item);
}

int hasId(const void* item, const void* id) {
  return item != nullptr && entryOf(item)->id == *static_cast<const int*>(id) ? 1 : 0;
}

// Compares by address of a pointer, as a null value is looked for, too.
int hasValue(const void* item, const void* value) {
  return item != nullptr && entryOf(item)->value == *static_cast<const void* const*>(value) ? 1 : 0;
}

DS_Position findEntry(const DS_Structure* registry, DS_MatchFn match, const void* wanted,
                      StatusCode* status) {
  if (registry == nullptr) return fail(status, MR_ARGUMENT_ERROR);
  return registry->methods->find(registry, match, wanted, status);
}

const MR_Registration* getEntry(const DS_Structure* registry, DS_MatchFn match, const void* wanted,
                                StatusCode* status) {
  const DS_Position position = findEntry(registry, match, wanted, status);
  return position != nullptr ? entryOf(registry->methods->get_data(position, status)) : nullptr;
}

bool isRegistered(int id, const DS_Structure* registry) {
  StatusCode miss = MR_NO_ERROR;
  return getEntry(registry, hasId, &id, &miss) != nullptr;
}

int addEntry(int id, void* value, DS_Structure* registry, StatusCode* status) {
  MR_Registration* entry = static_cast<MR_Registration*>(std::malloc(sizeof(MR_Registration)));
  if (entry == nullptr) return fail(status, MR_MEMORY_FAULT);
  *entry = {id, value};
  StatusCode code = MR_NO_ERROR;
  if (registry->methods->add(registry, entry, &code) == 0) std::free(entry);
  if (code != MR_NO_ERROR) return fail(status, code);
  return 1;
}

}  // namespace

int MR_register_item(int id, void* value, DS_Structure** registry, StatusCode* status) {
  if (registry == nullptr) return fail(status, MR_ARGUMENT_ERROR);
  if (id < 0 || isRegistered(id, *registry)) return fail(status, MR_INVALID_FUNCTION);
  if (*registry == nullptr) {
    StatusCode code = MR_NO_ERROR;
    *registry = DS_create_type(DS_SLIST, &code, __LINE__, __FILE__);
    if (code != MR_NO_ERROR) return fail(status, code);
  }
  return addEntry(id, value, *registry, status);
}

void* MR_get_id_registration(int id, const DS_Structure* registry, StatusCode* status) {
  const MR_Registration* entry = getEntry(registry, hasId, &id, status);
  return entry != nullptr ? entry->value : nullptr;
}

int MR_get_items_registration_id(const void* value, const DS_Structure* registry,
                                 StatusCode* status) {
  const MR_Registration* entry = getEntry(registry, hasValue, &value, status);
  return entry != nullptr ? entry->id : -1;
}

int MR_deregister_item(void* value, DS_Structure* registry, StatusCode* status) {
  if (value == nullptr) return fail(status, MR_ARGUMENT_ERROR);
  const DS_Position position = findEntry(registry, hasValue, &value, status);
  if (position == nullptr) return 0;
  std::free(registry->methods->get_data(position, status));
  registry->methods->set_data(position, nullptr, status);
  StatusCode code = MR_NO_ERROR;
  DS_remove_nulls(registry, &code);
  return 1;
}

int MR_clear_registrations(DS_Structure* registry, StatusCode* status) {
  StatusCode code = MR_NO_ERROR;
  const int cleared =
      DS_empty_list(registry, functionCast<DS_FreeFn>(DS_memory_free), nullptr, &code);
  if (code != MR_NO_ERROR) return fail(status, code);
  return cleared;
}
