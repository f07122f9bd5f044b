/* Recording of undoable work.
 *
 * Modelling code puts its commands into the current group: the top of a stack of groups of the
 * installed undo manager (vx/Undo.h). A null group on the stack switches recording off.
 *
 *     MR_undo_push_new_group("Move", false);
 *     if (MR_undo_get_group() == NULL) puts("nothing is recorded: there is no manager");
 *     MR_undo_pop_group(true);
 *
 * The stack has 10 levels. Pushes and pops must pair. More is asserted in debug builds; in release
 * builds recording is off at the levels beyond the tenth, and popping an empty stack does nothing.
 * Nulls of the manager, which switches recording off while it undoes, may lie beyond the tenth
 * level. Nothing is locked: all this is for the application's main thread.
 */
#ifndef KILNBASE_SERVICES_MR_UNDO_H
#define KILNBASE_SERVICES_MR_UNDO_H

#include <stdbool.h>

#include <kilnbase/export.h>

#ifdef __cplusplus
#include <vx/Undo.h>

/** A group of the undo manager. */
typedef vxUndo::Group MR_UndoGroup;

extern "C" {
#else
/** A group of the undo manager. */
typedef struct MR_UndoGroup MR_UndoGroup;
#endif

/** Whether the manager is undoing or redoing. Kept as they are: `MR_undo_set_in_redo` sets the flag
 * of `MR_undo_in_undo`, nothing sets that of `MR_undo_in_redo`, and so `MR_undo_in_undo` and
 * `MR_undo_is_active` are true while commands are undone as well as while they are redone. */
KILNBASE_API bool MR_undo_in_undo(void);
KILNBASE_API bool MR_undo_in_redo(void); /**< Always false. */
/** The same as `MR_undo_in_undo`. */
KILNBASE_API bool MR_undo_is_active(void);
/** Set the flag of `MR_undo_in_undo`. The installed manager calls them. */
KILNBASE_API void MR_undo_set_in_undo(bool on);
KILNBASE_API void MR_undo_set_in_redo(bool on);

/** Has the installed manager make a group. `joinsPrevious`: the group is undone and redone together
 * with the one before, under that one's name. Null when no manager is installed, while creation is
 * off, and without memory. The manager owns the group. */
KILNBASE_API MR_UndoGroup* MR_undo_new_group(const char* name, bool joinsPrevious);

/** Makes `group` the current one; null switches recording off. A group on the stack is held: the
 * limits of the manager do not drop the group, and undo waits until a group with commands is
 * popped. When the manager drops the group for another reason, null takes its place on the stack.
 */
KILNBASE_API void MR_undo_push_group(MR_UndoGroup* group);
KILNBASE_API void MR_undo_push_new_group(const char* name, bool joinsPrevious);

/** Takes the current group from the stack. With `discardEmpty` the manager drops the group when it
 * is the newest and has no commands. */
KILNBASE_API void MR_undo_pop_group(bool discardEmpty);

/** The current group, which is null when recording is off. The stack must not be empty: asserted in
 * debug builds; null in release builds. */
KILNBASE_API MR_UndoGroup* MR_undo_get_group(void);
/** The number of groups on the stack, nulls included. */
KILNBASE_API int MR_undo_get_num_groups(void);

/** True pushes a null group, also beyond the tenth level; false pops. */
KILNBASE_API void MR_undo_creation_disable(bool disable);

/** Called by a function that only works while commands are recorded: without a current group the
 * name of the function is reported. */
KILNBASE_API void MR_undo_call_supported(const char* name);
/** Called by a function that does not record what it does. With `report` the name of the function
 * and its caller are reported. Kept as it is: the folders of `file` are left out up to the last
 * backslash only. */
KILNBASE_API void MR_undo_call_unsupported(const char* name, bool report, const char* file,
                                           int line);

#ifdef __cplusplus
}

namespace vxKilnBase {

/// Installs a new undo manager in the place of the one before, and connects the manager with the
/// functions above: what it undoes and redoes sets `MR_undo_in_undo`, switching its creation off
/// pushes a null group, and groups that go away leave the stack. The application calls this once at
/// the start. While the manager is at work, it stays, and that is reported.
KILNBASE_API void undoInit();

/// The current group, or null when the stack is empty.
KILNBASE_API vxUndo::Group* undoGetGroup();

}  // namespace vxKilnBase
#endif

#endif
