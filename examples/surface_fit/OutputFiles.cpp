#include "examples/surface_fit/OutputFiles.h"

#include <fstream>
#include <system_error>

#include "examples/surface_fit/InputError.h"

namespace surfacefit {

namespace {

std::filesystem::path temporaryName(const OutputFile& file) {
  std::filesystem::path name = file.path;
  return name += ".part";
}

bool writeTemporary(const OutputFile& file) {
  std::ofstream stream(temporaryName(file), std::ios::binary);
  stream << file.content;
  stream.close();
  return stream.good();
}

bool moveIntoPlace(const OutputFile& file) {
  std::error_code error;
  std::filesystem::rename(temporaryName(file), file.path, error);
  return !error;
}

void removeTemporary(const OutputFile& file) {
  std::error_code ignored;
  std::filesystem::remove(temporaryName(file), ignored);
}

void forEach(const std::vector<OutputFile>& files, bool (*action)(const OutputFile&)) {
  for (const OutputFile& file : files) {
    if (action(file)) continue;
    for (const OutputFile& written : files) removeTemporary(written);
    throw InputError("cannot write '" + file.path.string() +
                     "'; give a folder that can be written to");
  }
}

}  // namespace

void writeFiles(const std::vector<OutputFile>& files) {
  forEach(files, writeTemporary);
  forEach(files, moveIntoPlace);
}

void makeFolder(const std::filesystem::path& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (!std::filesystem::is_directory(folder, error))
    throw InputError("cannot make the folder '" + folder.string() +
                     "'; give another one with --output");
}

}  // namespace surfacefit
