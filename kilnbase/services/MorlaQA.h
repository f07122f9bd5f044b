/* Assertions that are silent for customers and loud for testers.
 *
 *     const int spans = 4;
 *     MorlaQAAssert(1234, spans > 0);
 *
 * The environment switches the assertions on: MORLA_QA or MORLA_DEBUG exists, with any value, even
 * an empty one. The first call of `MorlaQAEnabled` or `MorlaQAAssert` decides for the life of the
 * process. All functions are for the application's main thread.
 */
#ifndef KILNBASE_SERVICES_MORLAQA_H
#define KILNBASE_SERVICES_MORLAQA_H

#include <stdbool.h>

#include <kilnbase/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Whether the assertions are switched on. */
KILNBASE_API bool MorlaQAEnabled(void);

/** Where the assertions are switched on and `condition` is false: asks the user to tell about the
 * bug of this number (`rptConfirmOK`), waits for the confirmation, and then writes to address zero,
 * so that the crash handler collects the state of the process. Otherwise does nothing. */
KILNBASE_API void MorlaQAAssert(int bugNumber, bool condition);

/** Whether callers are to check the heap: the debug switch 800 (`rptSetDebugCode`). */
KILNBASE_API bool checkMorlaHeap(void);

#ifdef __cplusplus
}
#endif

#endif
