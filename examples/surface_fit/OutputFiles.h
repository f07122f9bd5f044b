// Files that are written whole or not at all.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace surfacefit {

struct OutputFile {
  std::filesystem::path path;
  std::string content;
};

/// Writes every file under a temporary name beside its own, then gives all of them their names,
/// replacing what was there. Throws InputError, leaving no temporary file, when one cannot be
/// written.
void writeFiles(const std::vector<OutputFile>& files);

/// Makes the folder if it is missing. Throws InputError when it cannot be made.
void makeFolder(const std::filesystem::path& folder);

}  // namespace surfacefit
