/* What the headers of mingw-w64 lack for compilers of the Microsoft kind, and what the linker of
 * that kind wants of a C library. */
#include <crtdefs.h>
#undef __MINGW_ATTRIB_NORETURN
#define __MINGW_ATTRIB_NORETURN
#undef __MINGW_ATTRIB_DEPRECATED
#define __MINGW_ATTRIB_DEPRECATED

int _fltused = 1;
