#include <cstdlib>

#include <kilnbase/util/DS/detail/Callback.h>
#include <kilnbase/util/DS/detail/LinkedList.h>
#include <kilnbase/util/DS/mr_register.h>

using vxKilnBase::detail::fail;
using vxKilnBase::detail::functionCast;
using vxKilnBase::detail::ignored;
using vxKilnBase::detail::lacksMethods;

namespace {

using SinglyLinkedKind = vxKilnBase::detail::Kind<vxKilnBase::detail::SinglyLinked>;

MR_Registration* entryAt(DS_Position position, const DS_Structure* registry) {
  return static_cast<MR_Registration*>(registry->methods->get_data(position, nullptr));
}

// The position of the first entry for which `matches` returns true. In a list of the built-in kind
// the search goes through the nodes without calls by pointer.
template <class Predicate>
DS_Position findEntry(const DS_Structure* registry, Predicate matches, StatusCode* status) {
  if (lacksMethods(registry)) return fail(status, MR_ARGUMENT_ERROR);
  const auto matchesItem = [=](const void* item) {
    return item != nullptr && matches(*static_cast<const MR_Registration*>(item));
  };
  if (registry->methods == Ds_slist_get_methods()) {
    return SinglyLinkedKind::findWhere(*registry, matchesItem, status);
  }
  const DS_MatchFn match = [](const void* item, const void* user) {
    return static_cast<int>((*static_cast<decltype(&matchesItem)>(user))(item));
  };
  return registry->methods->find(registry, match, &matchesItem, status);
}

DS_Position findId(int id, const DS_Structure* registry, StatusCode* status) {
  const auto hasId = [=](const MR_Registration& entry) { return entry.id == id; };
  return findEntry(registry, hasId, status);
}

DS_Position findValue(const void* value, const DS_Structure* registry, StatusCode* status) {
  const auto hasValue = [=](const MR_Registration& entry) { return entry.value == value; };
  return findEntry(registry, hasValue, status);
}

bool isRegistered(int id, const DS_Structure* registry) {
  return findId(id, registry, ignored()) != nullptr;
}

int addEntry(int id, void* value, DS_Structure* registry, StatusCode* status) {
  MR_Registration* entry = static_cast<MR_Registration*>(std::malloc(sizeof(MR_Registration)));
  if (entry == nullptr) return fail(status, MR_MEMORY_FAULT);
  *entry = {id, value};
  StatusCode code = MR_NO_ERROR;
  const int added = registry->methods->add(registry, entry, status != nullptr ? &code : nullptr);
  if (added == 0) std::free(entry);
  if (code != MR_NO_ERROR) return fail(status, code);
  return added;
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
  if (lacksMethods(*registry)) return fail(status, MR_ARGUMENT_ERROR);
  return addEntry(id, value, *registry, status);
}

void* MR_get_id_registration(int id, const DS_Structure* registry, StatusCode* status) {
  DS_Position position = findId(id, registry, status);
  return position != nullptr ? entryAt(position, registry)->value : nullptr;
}

int MR_get_items_registration_id(const void* value, const DS_Structure* registry,
                                 StatusCode* status) {
  DS_Position position = findValue(value, registry, status);
  return position != nullptr ? entryAt(position, registry)->id : -1;
}

int MR_deregister_item(void* value, DS_Structure* registry, StatusCode* status) {
  if (value == nullptr) return fail(status, MR_ARGUMENT_ERROR);
  DS_Position position = findValue(value, registry, status);
  if (position == nullptr) return 0;
  std::free(entryAt(position, registry));
  registry->methods->set_data(position, nullptr, status);
  DS_remove_nulls(registry, ignored());
  return 1;
}

int MR_clear_registrations(DS_Structure* registry, StatusCode* status) {
  StatusCode code = MR_NO_ERROR;
  const int cleared =
      DS_empty_list(registry, functionCast<DS_FreeFn>(DS_memory_free), nullptr, &code);
  if (code != MR_NO_ERROR) return fail(status, code);
  return cleared;
}
