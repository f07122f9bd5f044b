/* The debug channel: indented printing to an output that the application chooses.
 *
 *     AA_set_print_out(AA_TO_OUTPUT, NULL);
 *     AA_indent();
 *     AA_debug_print("%d curves\n", 3);
 *
 * The process has one output and one indentation, both for its main thread. Messages of the channel
 * itself go through the channel. The channel does not clear a status line on the terminal;
 * `rptClearStatus` does.
 */
#ifndef KILNBASE_UTIL_AA_DEBUG_H
#define KILNBASE_UTIL_AA_DEBUG_H

#include <kilnbase/export.h>
#include <vx/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Where the output goes. Any other number stands for standard error, too. */
enum { AA_TO_OUTPUT = 0, AA_TO_ERROR = 1, AA_TO_FILE = 2, AA_TO_STREAM = 3 };

/** Writes as printf does, and flushes. Returns the number of characters, or a negative number. As
 * long as the chosen file cannot be opened, texts go to standard output. */
KILNBASE_API int AA_debug_print(const char* format, ...) VX_PRINTF(1, 2);

/** Chooses the output. At the start that is standard error.
 *
 * For `AA_TO_FILE` the argument is the name of the file, for `AA_TO_STREAM` an open `FILE*`, which
 * stays the caller's. For other modes the argument is ignored. A null name or stream leaves the
 * choice as it is.
 *
 * A file is opened by the first output after the choice. The first opening in the life of the
 * process empties the file, later openings append to it. The next choice closes the file, even if
 * the choice is the same file or a null stream. Two spellings of a name are two files. */
KILNBASE_API void AA_set_print_out(int mode, const void* name_or_stream);

/** Returns the mode. For `AA_TO_FILE` the name of the file is stored at `name`, unless `name` is
 * null. The text is valid until the end of the process. */
KILNBASE_API int AA_get_print_out(const char** name);

/** Sets the indentation, which is 0 at the start. -1 stands for one level more, -2 for one level
 * less. Kept as it is: the level may fall below 0, and callers go up again from there. */
KILNBASE_API void AA_set_indent(int level);

/** Prints three blanks for each level, nothing below level 1. Returns 1. */
KILNBASE_API int AA_indent(void);

/** Prints "ASSERT (file f, line n): message", indented and without a line end. Returns the number
 * of characters without the indentation. */
KILNBASE_API int Aa_print_assert(const char* file, int line, const char* message);

#ifdef __cplusplus
}
#endif

#endif
