// Where the files of the project lie.
#pragma once

#include <filesystem>
#include <string>

namespace host {

/// A path as the library writes it, for the C++ library.
std::filesystem::path nativePath(const char* path);

/// The path of a file in the folder of its type (`WIRE_DATA`, ...), which is made when there is
/// none. Throws std::runtime_error when the path would be longer than the library's paths can be.
std::filesystem::path projectFile(const std::string& name, int type);

}  // namespace host
