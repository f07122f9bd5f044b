/* KILN_ASSERT(condition) states what a caller must guarantee.
 *
 * It aborts with the condition, file and line in debug builds and vanishes in release builds. Input
 * (text lengths, wire lengths, file contents) is checked always and never asserted.
 */
#ifndef KILNBASE_DETAIL_ASSERT_H
#define KILNBASE_DETAIL_ASSERT_H

#include <assert.h>

#define KILN_ASSERT(condition) assert(condition)

#endif
