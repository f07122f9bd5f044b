// Calls of commands and callbacks that must not disturb the undo manager.
#pragma once

#include <algorithm>
#include <cstdint>
#include <exception>

#include <vx/Error.h>
#include <vx/Signal.h>
#include <vx/Undo.h>

namespace vxUndo::detail {

inline std::int64_t bytesOf(const Command& command) {
  try {
    return std::max(command.getNumBytesUsed(), 0);
  } catch (...) {
    return 0;
  }
}

// What throws is reported.
template <class Call>
void callSafely(Call call) {
  try {
    call();
  } catch (const std::exception& exception) {
    vxUndoReport("undo manager: %s\n", exception.what());
  } catch (...) {
    vxUndoReport("undo manager: unknown exception\n");
  }
}

template <class... Values>
void tell(vxRTB::SignalBase<Values...>& signal, Values... values) {
  callSafely([&] { signal.emit(values...); });
}

inline vxUtil::Error atWork() {
  return vxUtil::Error(kRefused, "undo is not possible now: the undo manager is at work\n");
}

}  // namespace vxUndo::detail
