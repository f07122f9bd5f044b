/* VX_API marks what libvx exports, VX_LOCAL a class inside an exported one that stays inside (on
 * Windows every such class does). VX_PRINTF lets the compiler check the arguments of a format. */
#ifndef VX_EXPORT_H
#define VX_EXPORT_H

#if defined(VX_STATIC)
#define VX_API
#elif defined(_WIN32)
#if defined(VX_BUILDING)
#define VX_API __declspec(dllexport)
#else
#define VX_API __declspec(dllimport)
#endif
#else
#define VX_API __attribute__((visibility("default")))
#endif

#if defined(VX_STATIC) || defined(_WIN32)
#define VX_LOCAL
#else
#define VX_LOCAL __attribute__((visibility("hidden")))
#endif

#if defined(__clang__)
#define VX_PRINTF(formatIndex, firstArgument) \
  __attribute__((format(printf, formatIndex, firstArgument)))
#elif defined(__GNUC__)
#define VX_PRINTF(formatIndex, firstArgument) \
  __attribute__((format(gnu_printf, formatIndex, firstArgument)))
#else
#define VX_PRINTF(formatIndex, firstArgument)
#endif

#endif
