// In a build without GTK.
#include "tools/morlaWarning/Dialog.h"

std::optional<int> morlawarning::showOnDesktop(const Warning&) {
  return std::nullopt;
}
