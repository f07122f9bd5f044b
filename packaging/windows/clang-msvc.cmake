# Compiles C for Windows as Microsoft's compiler does: its calling conventions, its records, its import
# libraries. The C library is the one of the system, as mingw-w64 declares it. There is no start-up code:
# the result of main is the one of the process.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(mingw /usr/x86_64-w64-mingw32)
set(CMAKE_C_COMPILER clang-19)
set(CMAKE_C_COMPILER_TARGET x86_64-pc-windows-msvc)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_POLICY_DEFAULT_CMP0091 NEW)
set(CMAKE_MSVC_RUNTIME_LIBRARY "")
set(CMAKE_C_FLAGS_INIT "-std=c11 -Wall -Wextra -Werror -isystem ${mingw}/include
  -include ${CMAKE_CURRENT_LIST_DIR}/clang-msvc.h")
string(REPLACE "\n" "" CMAKE_C_FLAGS_INIT "${CMAKE_C_FLAGS_INIT}")
set(CMAKE_C_STANDARD_LIBRARIES ${mingw}/lib/libmsvcrt.a CACHE STRING "")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-nostdlib -Wl,/entry:main")
