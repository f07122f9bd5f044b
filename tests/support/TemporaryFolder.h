// A folder of a test's own, removed with all that is in it when the test ends.
#pragma once

#include <filesystem>
#include <string>

namespace kilntest {

class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  // Writes a file in it and returns its path.
  std::filesystem::path write(const std::string& name, const std::string& content) const;
  // The names of what is in it, in order, a blank after each.
  std::string names() const;

 private:
  std::filesystem::path path_;
};

std::string readFile(const std::filesystem::path& file);

// What another process writes, in one piece, into a file that is not there yet or empty. Empty when
// nothing comes within 20 s.
std::string awaitFile(const std::filesystem::path& file);

}  // namespace kilntest
