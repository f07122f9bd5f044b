/* Cursor procedures: functions that follow the cursor.
 *
 * Where the application expects one function, it installs the dispatcher, which calls one primary
 * procedure and then a list of further ones.
 *
 *     add_cursor_procedure(NULL);  // ignored
 *     get_cursor_procedure()(0);   // calls all procedures with the argument 0
 *
 * A procedure may set, add and remove procedures, and call the dispatcher. A procedure that is
 * removed while the dispatcher runs is not called any more, and one that is added is called from
 * the next run on. Nothing is locked: the procedures are for the application's main thread.
 */
#ifndef KILNBASE_SERVICES_CURSOR_PROCEDURE_H
#define KILNBASE_SERVICES_CURSOR_PROCEDURE_H

#include <stdint.h>

#include <kilnbase/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The argument, a number or a pointer, is the application's. */
typedef void (*CursorProcedure)(intptr_t argument);

/** Replaces the primary procedure; null removes it. */
KILNBASE_API void set_cursor_procedure(CursorProcedure procedure);

/** Appends `procedure` to the list, then removes from the list every element that is equal to the
 * one before it: adding what already stands last leaves the list as it was. Null is ignored.
 * Without memory nothing is added. */
KILNBASE_API void add_cursor_procedure(CursorProcedure procedure);

/** Removes every occurrence of `procedure` from the list. */
KILNBASE_API void remove_cursor_procedure(CursorProcedure procedure);

/** The dispatcher. */
KILNBASE_API CursorProcedure get_cursor_procedure(void);

#ifdef __cplusplus
}
#endif

#endif
