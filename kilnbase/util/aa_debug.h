/* The debug channel: indented printing to where the application wants it.
 *
 *     AA_set_print_out(AA_TO_FILE, "curves.txt");
 *     AA_indent();
 *     AA_debug_print("%d curves\n", count);
 *
 * Where the output goes, and the indentation, are one setting for the whole process, for its main
 * thread. The channel's own complaints go through the channel. It does not clear a status line that
 * stands on the terminal; `rptClearStatus` does.
 */
#ifndef KILNBASE_UTIL_AA_DEBUG_H
#define KILNBASE_UTIL_AA_DEBUG_H

#include <kilnbase/export.h>
#include <vx/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Where the output goes; any other number is standard error, too. */
enum { AA_TO_OUTPUT = 0, AA_TO_ERROR = 1, AA_TO_FILE = 2, AA_TO_STREAM = 3 };

/** Writes as printf does, and flushes. Returns the number of characters, or a negative number. What
 * is meant for a file that cannot be opened goes to standard output. */
KILNBASE_API int AA_debug_print(const char* format, ...) VX_PRINTF(1, 2);

/** Chooses the output; the standard error at the start.
 *
 * For `AA_TO_FILE` the argument is the file's name, for `AA_TO_STREAM` an open `FILE*`, which stays
 * the caller's; otherwise it is not looked at. A null name or stream leaves the choice as it is.
 *
 * A file is opened by the first output after it has been chosen: the first time in the life of the
 * process it is emptied, later it is appended to. It is closed by the next choice, be it the same
 * file or a null stream. Two spellings of a name are two files. */
KILNBASE_API void AA_set_print_out(int mode, const void* name_or_stream);

/** Returns the mode. When that is `AA_TO_FILE`, the file's name is stored at `name`, unless that is
 * null; the text stays good. */
KILNBASE_API int AA_get_print_out(const char** name);

/** Sets the indentation, 0 at the start; -1 stands for one level more and -2 for one level less,
 * which may be below 0. */
KILNBASE_API void AA_set_indent(int level);

/** Prints three blanks a level. Returns 1. */
KILNBASE_API int AA_indent(void);

/** Prints "ASSERT (file f, line n): message", indented and without a line end. Returns the number
 * of characters but for the indentation. */
KILNBASE_API int Aa_print_assert(const char* file, int line, const char* message);

#ifdef __cplusplus
}
#endif

#endif
