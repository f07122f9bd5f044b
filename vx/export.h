/* VX_API marks what libvx exports. */
#ifndef VX_EXPORT_H
#define VX_EXPORT_H

#if defined(_WIN32)
#if defined(VX_BUILDING)
#define VX_API __declspec(dllexport)
#else
#define VX_API __declspec(dllimport)
#endif
#else
#define VX_API __attribute__((visibility("default")))
#endif

#endif
