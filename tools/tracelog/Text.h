// Texts for a terminal.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tracelog {

/// The path in UTF-8.
std::string nameOf(const std::filesystem::path& path);

/// The text with the bytes that a terminal could obey, or not show, written as \xNN. A backslash
/// stays as it is, so that paths can be copied.
std::string shown(std::string_view text);

}  // namespace tracelog
