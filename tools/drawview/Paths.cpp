#include "tools/drawview/Paths.h"

#include "tools/drawview/InputError.h"

namespace drawview {

namespace fs = std::filesystem;

std::string pathText(const fs::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

void requireFree(const fs::path& path, bool force) {
  std::error_code error;
  if (fs::symlink_status(path, error).type() == fs::file_type::not_found) return;
  if (!force) throw InputError(pathText(path) + " is there already; --force overwrites the file");
  if (!fs::is_regular_file(path, error)) throw InputError(pathText(path) + " is no regular file");
}

}  // namespace drawview
