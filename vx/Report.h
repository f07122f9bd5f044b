/* Reports to the user: errors, messages, the status line, and the question whether to stop. Reports
 * to the developer: debug output and numbered debug switches.
 *
 * The library and its callers report through these functions in printf style. The host decides
 * where the texts go by replacing the sinks. The default sinks write to standard error and begin a
 * new line for another kind of text. On a terminal the status stays on one line, which is cleared
 * for other output; anywhere else each status is a line of its own.
 *
 *     for (int i = 0; i < 100 && !rptCheckAbort(); ++i) {
 *       rptStatus("Iteration %d (ESC to stop).", i);
 *     }
 *     rptClearStatus();
 *
 * Texts are UTF-8. When printf refuses the arguments (a wide text that the locale lacks), the
 * format itself is shown. All functions are for the application's main thread.
 */
#ifndef VX_REPORT_H
#define VX_REPORT_H

#include <stdarg.h>
#include <stdbool.h>

#include <vx/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Writes to the error report. A text may be a piece of a line; a line feed is part of the text. */
VX_API void rptError(const char* format, ...) VX_PRINTF(1, 2);

/** `rptError` with an argument list. */
VX_API void rptVError(const char* format, va_list arguments) VX_PRINTF(1, 0);

/** Shows a message. Each call is a message of its own; a line feed at the end is not needed. */
VX_API void rptUser(const char* format, ...) VX_PRINTF(1, 2);

/** Shows a message, as `rptUser` does, and waits until the user has confirmed it. By default the
 * user confirms with the Return key, and the call does not wait when standard input is no terminal.
 */
VX_API void rptConfirmOK(const char* format, ...) VX_PRINTF(1, 2);

/** Replaces the status line. Control characters in the text become blanks. */
VX_API void rptStatus(const char* format, ...) VX_PRINTF(1, 2);

/** Removes the status line. A program calls this before it writes to the terminal by other ways. */
VX_API void rptClearStatus(void);

/** Whether the user has asked to stop. Once true, the result stays true until `rptResetAbort`.
 *
 * By default, pressing ESC asks to stop when standard input is a terminal. The call takes the keys:
 * the terminal neither echoes keys nor waits for whole lines, and keys other than ESC are read and
 * dropped. That lasts until `rptReleaseKeys`, the end of the process or its suspension. A signal
 * that ends or suspends the process gives the terminal back first, unless the host handles the
 * signal.
 *
 * Cursor and function keys, which send ESC and more, do not ask to stop; to tell them apart, the
 * call waits at most 50 ms after ESC, and never otherwise. Alt with a key, which sends ESC and the
 * key, asks to stop, except for Alt+[ and Alt+O, which look like the start of a cursor key. */
VX_API bool rptCheckAbort(void);

/** Forgets that the user has asked to stop, and drops the keys pressed so far. */
VX_API void rptResetAbort(void);

/** Gives the terminal back as it was before `rptCheckAbort`, for a prompt that reads from the
 * terminal. The next `rptCheckAbort` takes the keys again. */
VX_API void rptReleaseKeys(void);

/** Makes Ctrl-C ask to stop, for programs that want to finish their work instead of being killed. A
 * second Ctrl-C, before `rptResetAbort`, ends the process as usual. Where Ctrl-C is ignored, as in
 * a job that a script put into the background, it stays ignored. */
VX_API void rptCatchInterrupt(void);

/** Waits for that many milliseconds. */
VX_API void rptSleep(unsigned int milliseconds);

/** Writes to the debug output when `level` is at most the debug level. A text may be a piece of a
 * line, and is written as it is: ">>>" and "<<<" have no meaning here. */
VX_API void rptDebug(int level, const char* format, ...) VX_PRINTF(2, 3);

/** The debug level; 0 at the start. */
VX_API void rptSetDebugLevel(int level);

/** Whether the debug switch of this number is on. The switches are numbered 0 to 1023; switches
 * with other numbers are never on. All are off at the start. */
VX_API bool rptDebugCodeIsSet(int code);
VX_API void rptSetDebugCode(int code, bool on);

/** The functions that reports go to. Their texts are formatted and live until the function returns.
 */
typedef struct RptSinks {
  void (*error)(const char* text);            /**< A piece of the error report. */
  void (*user)(const char* text);             /**< One message. */
  void (*status)(const char* text);           /**< The new status, a single line; "" removes it. */
  bool (*checkAbort)(void);                   /**< Whether the user asks to stop now. */
  void (*sleep)(unsigned int milliseconds);   /**< What `rptSleep` does. */
  void (*confirmOK)(const char* text);        /**< Returns when the user has confirmed. */
  void (*debug)(int level, const char* text); /**< A piece of the debug output. */
} RptSinks;

/** Installs the functions of `sinks`. A null member stands for the default function, a null `sinks`
 * for the defaults of all members. Returns the functions that were in use, none of them null: a new
 * sink can pass texts on to them, and the table can be installed again. */
VX_API RptSinks rptSetSinks(const RptSinks* sinks);

#ifdef __cplusplus
}
#endif

#endif
