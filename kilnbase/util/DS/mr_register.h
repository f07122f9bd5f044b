/* Registries: pointers under integer ids.
 *
 * A registry is a generic structure (ds_structures.h) of entries, in the order of registration,
 * that the caller holds in a variable which starts as null. A look-up goes through the entries.
 * Values are not owned.
 *
 *     DS_Structure* tools = NULL;
 *     MR_register_item(7, &penTool, &tools, &status);
 *     Tool* tool = MR_get_id_registration(7, tools, &status);
 *
 * A status code is written on failure only; a miss is `MR_ITEM_NOT_FOUND`. A null registry is
 * `MR_ARGUMENT_ERROR`, which is what a look-up before the first registration gives. Nothing is
 * locked.
 */
#ifndef KILNBASE_UTIL_DS_MR_REGISTER_H
#define KILNBASE_UTIL_DS_MR_REGISTER_H

#include <stdint.h>

#include <kilnbase/export.h>
#include <kilnbase/util/DS/ds_structures.h>
#include <kilnbase/util/mr_status.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The item that a registry holds, from `malloc`. */
typedef struct MR_Registration {
  int32_t id;
  void* value;
} MR_Registration;

/** Registers `value` under `id`, in a registry that is made when the variable holds null. A
 * negative id or one that is in use is `MR_INVALID_FUNCTION`. Returns 1 or 0. */
KILNBASE_API int MR_register_item(int id, void* value, DS_Structure** registry, StatusCode* status);

/** The value registered under `id`, or null. */
KILNBASE_API void* MR_get_id_registration(int id, const DS_Structure* registry, StatusCode* status);

/** The id under which `value` was registered first, or -1. */
KILNBASE_API int MR_get_items_registration_id(const void* value, const DS_Structure* registry,
                                              StatusCode* status);

/** Removes the first entry with this value, which must not be null. Returns 1 when there was one,
 * else 0. */
KILNBASE_API int MR_deregister_item(void* value, DS_Structure* registry, StatusCode* status);

/** Removes all entries; the registry itself stays. Returns 1 or 0. */
KILNBASE_API int MR_clear_registrations(DS_Structure* registry, StatusCode* status);

#ifdef __cplusplus
}
#endif

#endif
