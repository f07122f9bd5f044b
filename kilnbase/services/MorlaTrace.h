// The trace: a flight recorder of short lines, each with the time and an area of the application.
//
// The lines go into a ring of a fixed size in a file of this process, where the newest of them
// survive a crash; the program "tracelog" shows them. docs/trace-format.md tells the format.
//
//     if (MorlaTrace::initialize("traces", 1 << 20, 2))
//       MorlaTrace::trace1(MorlaTrace::UI, "picked %d of %d", 3, 7);
//     MorlaTrace::finalize();
//
// For the application's main thread: there is one ring, without a lock. A line costs no allocation
// and no wait; a line above the level costs little more than its call.
#pragma once

#include <cstddef>

#include <kilnbase/export.h>
#include <vx/export.h>

namespace MorlaTrace {

/// The areas of the application. Lines hold the names of these constants.
enum Subsystem { Picking = 0, SPF = 1, UI = 2, UIFunction = 3, Undo = 4, Debug = 5 };

/// Makes the file of the ring in `directory`, which must exist, and sets the level: lines of the
/// levels 1 to `level` are kept. The ring has `size` bytes, taken as a 32-bit int, at least 512,
/// rounded up to a multiple of 256. The space on the disk is taken now.
///
/// The name of the file is "MorlaTrace-%s.dat" with a new UUID. A small file beside it, with ".pos"
/// after the name, tells where the lines begin and end; without that file the ring works all the
/// same. Both are locked (`vxOS::FileLock` on the ring) until the process ends, and stay then.
///
/// False when the file cannot be made; level and ring stay as they are then.
///
/// Kept as it is: another call starts a new file, but its first line stands where the next line of
/// the old file would have stood, and `dump` shows nothing until the new lines have come around to
/// where the oldest line stood. Places that the new ring does not have are forgotten: such a ring
/// starts at its beginning.
KILNBASE_API bool initialize(const char* directory, std::size_t size, int level);

/// Whether the level is above 0.
KILNBASE_API bool enabled();

/// `trace1` to `trace4` write a line of the level 1 to 4 as printf does. Line feeds in the text
/// become blanks. A line whose prefix ("2026/11/21 20:15:00 <UI> ") and text have more than 252
/// bytes together is dropped whole, and so is a line that printf refuses.
KILNBASE_API void trace1(Subsystem subsystem, const char* format, ...) VX_PRINTF(2, 3);
KILNBASE_API void trace2(Subsystem subsystem, const char* format, ...) VX_PRINTF(2, 3);
KILNBASE_API void trace3(Subsystem subsystem, const char* format, ...) VX_PRINTF(2, 3);
KILNBASE_API void trace4(Subsystem subsystem, const char* format, ...) VX_PRINTF(2, 3);

/// Calls `callback(context, text)` for every line from the oldest to the newest, when the level is
/// above 0. A text lives until the callback returns. The callback must not trace.
KILNBASE_API void dump(void (*callback)(void* context, const char* text), void* context);

/// Sets where `dumpLog` writes and the name in its file names. The texts are copied. Without a
/// directory `dumpLog` does nothing.
KILNBASE_API void initLog(const char* directory, const char* name);

/// Writes the lines that `dump` shows to the text file "MorlaTraceLog-USER-NAME-STAMP.log" in the
/// directory of the logs, which is made when it is missing but its parent is not. USER is the
/// environment variable USERNAME, or else USER, or else "Unknown User"; NAME comes from `initLog`;
/// STAMP is month, day, year, hour and minute. Does nothing when the file cannot be opened.
///
/// Kept as it is: the month of STAMP counts from 0 (January is 00), unlike the month of the lines;
/// scripts that sort the logs rely on that.
KILNBASE_API void dumpLog();

/// Sets the level to 0. The file stays open until the library is unloaded.
KILNBASE_API void finalize();

}  // namespace MorlaTrace
