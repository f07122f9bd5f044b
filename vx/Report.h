/* Reports to the user: errors, messages, the status line, and the question whether to stop; and to
 * the developer: debug output and numbered debug switches.
 *
 * The library and its callers report through these functions in printf style; the host decides
 * where the text goes by replacing the sinks. The default sinks write to standard error and keep
 * different texts on different lines. On a terminal the status stays in place, on one line that is
 * cleared for other output; anywhere else each status is a line of its own.
 *
 *     rptStatus("Iteration %d (ESC to stop).", i);
 *     if (rptCheckAbort()) return;
 *
 * Texts are UTF-8. When printf refuses the arguments (a wide text that the locale lacks), the
 * format itself is shown. All of it is for the application's main thread.
 */
#ifndef VX_REPORT_H
#define VX_REPORT_H

#include <stdarg.h>
#include <stdbool.h>

#include <vx/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Writes to the error report. Texts come piece by piece; a line feed is part of the text. */
VX_API void rptError(const char* format, ...) VX_PRINTF(1, 2);

/** `rptError` with an argument list. */
VX_API void rptVError(const char* format, va_list arguments) VX_PRINTF(1, 0);

/** Shows a message; each call is one, and a line feed at its end is not needed. */
VX_API void rptUser(const char* format, ...) VX_PRINTF(1, 2);

/** Shows a message, as `rptUser` does, and waits until the user has confirmed it. By default that
 * is done with the Return key; where standard input is no terminal, nobody is there to wait for. */
VX_API void rptConfirmOK(const char* format, ...) VX_PRINTF(1, 2);

/** Replaces the status line. Control characters in it become blanks. */
VX_API void rptStatus(const char* format, ...) VX_PRINTF(1, 2);

/** Removes the status line, which a program does before it writes to the terminal by other ways. */
VX_API void rptClearStatus(void);

/** Whether the user has asked to stop. Once true, it stays true until `rptResetAbort`.
 *
 * By default, pressing ESC asks to stop when standard input is a terminal. The call takes the keys:
 * until `rptReleaseKeys`, the end of the process or its suspension that terminal neither echoes
 * keys nor waits for whole lines; keys other than ESC are read and dropped. Signals that end or
 * suspend the process and that the host leaves alone give the terminal back first.
 *
 * The call does not wait, but for at most 50 ms after ESC: cursor and function keys send ESC and
 * more, and do not count. Alt with a key sends ESC and that key and asks to stop too, but for Alt+[
 * and Alt+O, which look like the start of a cursor key. */
VX_API bool rptCheckAbort(void);

/** Forgets that the user has asked to stop, and the keys pressed so far. */
VX_API void rptResetAbort(void);

/** Gives the terminal back as it was before `rptCheckAbort`, for a prompt that reads from it; the
 * next `rptCheckAbort` takes the keys again. */
VX_API void rptReleaseKeys(void);

/** Makes Ctrl-C ask to stop, for programs that would rather finish what they do than be killed. A
 * second Ctrl-C, before `rptResetAbort`, ends the process as usual. Where Ctrl-C is ignored (a job
 * that a script put into the background) it stays so. */
VX_API void rptCatchInterrupt(void);

/** Waits for that many milliseconds. */
VX_API void rptSleep(unsigned int milliseconds);

/** Writes to the debug output, piece by piece, when `level` is at most the debug level. Every piece
 * is plain text. */
VX_API void rptDebug(int level, const char* format, ...) VX_PRINTF(2, 3);

/** The debug level; 0 at the start. */
VX_API void rptSetDebugLevel(int level);

/** Whether the debug switch of that number is on. They are numbered 0 to 1023; those beyond are
 * never on. All are off at the start. */
VX_API bool rptDebugCodeIsSet(int code);
VX_API void rptSetDebugCode(int code, bool on);

/** Where reports go. The texts are formatted and live until the sink returns. */
typedef struct RptSinks {
  void (*error)(const char* text);  /**< A piece of the error report. */
  void (*user)(const char* text);   /**< One message. */
  void (*status)(const char* text); /**< The new status, a single line; "" removes it. */
  bool (*checkAbort)(void);         /**< Whether the user asks to stop now. */
  void (*sleep)(unsigned int milliseconds);
  void (*confirmOK)(const char* text);        /**< Returns when the user has confirmed. */
  void (*debug)(int level, const char* text); /**< A piece of the debug output. */
} RptSinks;

/** Installs the functions of `sinks`; a null member, or all of them when `sinks` is null, stands
 * for the default. Returns the functions that were in use, none of them null, so that a sink can
 * pass texts on and the table can be installed again. */
VX_API RptSinks rptSetSinks(const RptSinks* sinks);

#ifdef __cplusplus
}
#endif

#endif
