/* KILNBASE_API marks what libKilnBase exports. */
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

#endif
