// A folder for what a guide's program writes.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace guide {

/// An empty folder under the current one while it lives, deleted with all that is in it.
class ScratchFolder {
 public:
  explicit ScratchFolder(const char* name) : path_(std::filesystem::current_path() / name) {
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& path() const { return path_; }
  std::string string() const { return path_.string(); }

 private:
  std::filesystem::path path_;
};

}  // namespace guide
