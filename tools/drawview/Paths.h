// Paths that the user gives.
#pragma once

#include <filesystem>
#include <string>

namespace drawview {

/// The path in UTF-8.
std::string pathText(const std::filesystem::path& path);

/// Throws InputError unless a new file can have the path: nothing is there, or, with `force`, a
/// regular file that goes.
void requireFree(const std::filesystem::path& path, bool force);

}  // namespace drawview
