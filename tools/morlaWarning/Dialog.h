// The ways to show a warning.
#pragma once

#include <functional>
#include <optional>

#include "tools/morlaWarning/WarningArguments.h"

namespace morlawarning {

/// The answer when the user closes the warning without a choice, and when the display or terminal
/// goes away.
constexpr int kNoButton = 0;

/// Shows a warning and waits for the user. Returns the number of the chosen button, from 1, or
/// kNoButton. Nothing when there is nothing to show a warning on.
using Dialog = std::function<std::optional<int>(const Warning&)>;

/// A window.
std::optional<int> showOnDesktop(const Warning& warning);

/// A question on the terminal that controls this process.
std::optional<int> showOnTerminal(const Warning& warning);

}  // namespace morlawarning
