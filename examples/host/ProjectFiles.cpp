#include "examples/host/ProjectFiles.h"

#include <cstdlib>
#include <memory>
#include <new>
#include <stdexcept>
#include <string_view>

#include <kilnbase/util/db_filename.h>

namespace host {

namespace {

constexpr std::size_t kPathSize = 264;

}  // namespace

std::filesystem::path nativePath(const char* path) {
  const std::unique_ptr<char, decltype(&std::free)> slashes(convertFilename(path, 1), &std::free);
  if (!slashes) throw std::bad_alloc();
  const std::string_view text(slashes.get());
  return std::u8string(text.begin(), text.end());
}

// A path that is too long gives the folder alone.
std::filesystem::path projectFile(const std::string& name, int type) {
  char path[kPathSize];
  std::string text = name;
  expand_filename(path, text.data(), type);
  if (!std::string_view(path).ends_with(name))
    throw std::runtime_error("the path of " + name + " in the project would be too long");
  return nativePath(path);
}

}  // namespace host
