// A warning as a question on a terminal.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tools/morlaWarning/WarningArguments.h"

namespace morlawarning {

/// The warning with its buttons numbered, and a line end.
std::string questionText(const Warning& warning);

/// What stands before the user's answer.
std::string promptText(const Warning& warning);

/// The button that a line of the user's means: its number, 1 for a line without text, kNoButton for
/// "q" and for the Escape key. Nothing for other lines.
std::optional<int> buttonFor(std::string_view line, std::size_t buttons);

}  // namespace morlawarning
