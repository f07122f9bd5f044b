/* KILNBASE_API marks what libKilnBase exports. KILNBASE_INLINE marks functions that it exports,
 * too, for other languages, and that C and C++ compile where they are called. */
#ifndef KILNBASE_EXPORT_H
#define KILNBASE_EXPORT_H

#if defined(KILNBASE_STATIC)
#define KILNBASE_API
#elif defined(_WIN32)
#if defined(KILNBASE_BUILDING)
#define KILNBASE_API __declspec(dllexport)
#else
#define KILNBASE_API __declspec(dllimport)
#endif
#else
#define KILNBASE_API __attribute__((visibility("default")))
#endif

#if defined(KILNBASE_BUILDING)
#define KILNBASE_INLINE KILNBASE_API __attribute__((used)) inline
#elif defined(__GNUC_GNU_INLINE__) /* before C99 `inline` alone defined the symbol, too */
#define KILNBASE_INLINE extern __inline__
#else
#define KILNBASE_INLINE inline
#endif

#endif
