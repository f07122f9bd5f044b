/* Status codes: how the plain functions of the library report failures.
 *
 * A function that can fail takes a `StatusCode*` as its last argument and writes a code there when
 * it fails. On success the function leaves the variable alone, unless the text of the function says
 * that it sets the variable to 0 first. Callers set the variable to 0 beforehand:
 *
 *     StatusCode status = MR_NO_ERROR;
 *     DS_Structure* curves = DS_create_type(DS_SLIST, &status, __LINE__, __FILE__);
 *     Mr_print_conditional(status, __FILE__, __LINE__, "no list for the curves\n");
 *     DS_destructor(&curves, NULL, NULL, &status);
 */
#ifndef KILNBASE_UTIL_MR_STATUS_H
#define KILNBASE_UTIL_MR_STATUS_H

#include <stdint.h>

#include <kilnbase/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The code of a failure; 0 is success. */
typedef int32_t StatusCode;

/** The values of a `StatusCode`. */
enum {
  MR_NO_ERROR = 0,
  MR_ARGUMENT_ERROR = 1,
  MR_UNKNOWN = 2,
  MR_MEMORY_FAULT = 3,
  MR_INVALID_FUNCTION = 4,
  MR_INVALID_DATA = 5,
  MR_ALTERNATE_RESULT = 6,
  MR_INCOMPATIBILITY = 7,
  MR_NO_ANIMATION = 8,
  MR_WALK_ERROR = 9,
  MR_WALK_TERMINATED = 10,
  MR_WALK_INCOMPLETE = 11,
  MR_ITEM_NOT_FOUND = 12,
  MR_REMOVAL_ERROR = 13,
  MR_CANNOT_SORT = 14,
  MR_UNEXPECTED_NULL_STRUCTURE = 15,
  MR_ITEM_FILTERED = 16,
  MR_UNEXPECTED_SWITCH_CASE = 17,
  MR_STORE = 18,
  MR_RETRIEVE = 19,
  MR_WDL_ERROR = 20,
  MR_INVALID_OPTIONS = 21,
  MR_FILE_ERROR = 22,
  MR_PICKLIST_ERROR = 23,
  MR_ANIMTRON_METHOD_ERROR = 24,
  MR_ALREADY_EXISTS = 25,
  MR_MISSING_CURVES = 26,
  MR_MISSING_SURFACES = 27,
  MR_MISSING_SKELETON = 28,
  MR_SECURITY = 29,
  MR_ABORTED = 30,
  MR_EXPRESSION_ERROR = 31
};

/** The status for callers who do not care about the code. Nobody reads it. 0 at the start. */
KILNBASE_API extern StatusCode Mr_err_ignore;

/** A debug switch of the application. The library does not read it. 0 at the start. */
KILNBASE_API extern int32_t morla_debug;

/** Reports "ERROR name (file f, line n): message" through `rptError`, with the name of the code. No
 * line feed is added: the message ends with one where the report is to go on in a new line. Returns
 * 1. The code must be 0 to 31. Asserted in debug builds; in release builds another code is reported
 * as "UNKNOWN". */
KILNBASE_API int Mr_print_error(int code, const char* file, int line, const char* message);

/** `Mr_print_error` unless the code is 0. Returns 1 either way. */
KILNBASE_API int Mr_print_conditional(int code, const char* file, int line, const char* message);

#ifdef __cplusplus
}
#endif

#endif
