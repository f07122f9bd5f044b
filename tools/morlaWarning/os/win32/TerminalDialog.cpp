#include "tools/morlaWarning/Dialog.h"

// A process that cannot show a window here has no console to read from either.
std::optional<int> morlawarning::showOnTerminal(const Warning&) {
  return std::nullopt;
}
