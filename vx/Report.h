/* Reports to the user: errors, messages, the status line, and the question whether to stop.
 *
 * The library and its callers report through these functions in printf style; the host decides
 * where the text goes by replacing the sink. The default sink writes errors and messages to
 * standard error and, on a terminal, keeps the status line in place.
 *
 * All of it is for the application's main thread.
 */
#ifndef VX_REPORT_H
#define VX_REPORT_H

#include <stdarg.h>
#include <stdbool.h>

#include <vx/export.h>

#if defined(__GNUC__)
#define VX_PRINTF(formatIndex, firstArgument) \
  __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define VX_PRINTF(formatIndex, firstArgument)
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Writes to the error report. Texts come piece by piece; a line feed is part of the text. */
VX_API void rptError(const char* format, ...) VX_PRINTF(1, 2);

/** `rptError` with an argument list. */
VX_API void rptVError(const char* format, va_list arguments) VX_PRINTF(1, 0);

#ifdef __cplusplus
}
#endif

#endif
