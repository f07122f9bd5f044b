/* Registries: pointers under integer ids.
 *
 * A registry is a generic structure (ds_structures.h) of entries in the order of registration. The
 * caller holds the registry in a variable that starts as null. A look-up goes through the entries.
 * Values are not owned.
 *
 *     int pen = 0;
 *     StatusCode status = MR_NO_ERROR;
 *     DS_Structure* tools = NULL;
 *     MR_register_item(7, &pen, &tools, &status);
 *     int* tool = (int*)MR_get_id_registration(7, tools, &status);
 *     *tool = 1;
 *     MR_clear_registrations(tools, &status);
 *     DS_destructor(&tools, NULL, NULL, &status);
 *
 * A status code is written on failure only. A look-up that finds nothing is `MR_ITEM_NOT_FOUND`. A
 * null registry is `MR_ARGUMENT_ERROR`, also in look-ups before the first registration. Nothing is
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

/** An item of a registry, from `malloc`. */
typedef struct MR_Registration {
  int32_t id;  /**< At least 0, and different from all others of the registry. */
  void* value; /**< Borrowed. */
} MR_Registration;

/** Registers `value` under `id`. The registry is made when the variable holds null. A negative id
 * or an id in use is `MR_INVALID_FUNCTION`. Returns 1 or 0. */
KILNBASE_API int MR_register_item(int id, void* value, DS_Structure** registry, StatusCode* status);

/** The value registered under `id`, or null. */
KILNBASE_API void* MR_get_id_registration(int id, const DS_Structure* registry, StatusCode* status);

/** The id under which `value` was registered first, or -1. */
KILNBASE_API int MR_get_items_registration_id(const void* value, const DS_Structure* registry,
                                              StatusCode* status);

/** Removes the first entry with this value, and leaves other entries with it. A null value is
 * `MR_ARGUMENT_ERROR`. Returns 1 when there was an entry, else 0. */
KILNBASE_API int MR_deregister_item(void* value, DS_Structure* registry, StatusCode* status);

/** Removes all entries; the registry itself stays. Returns 1 or 0. */
KILNBASE_API int MR_clear_registrations(DS_Structure* registry, StatusCode* status);

#ifdef __cplusplus
}
#endif

#endif
