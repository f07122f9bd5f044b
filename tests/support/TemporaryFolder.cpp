#include "tests/support/TemporaryFolder.h"

#include <chrono>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <thread>

namespace kilntest {

TemporaryFolder::TemporaryFolder()
    : path_(std::filesystem::temp_directory_path() /
            ("kilntest-" + std::to_string(std::random_device()()))) {
  std::filesystem::create_directories(path_);
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TemporaryFolder::write(const std::string& name,
                                             const std::string& content) const {
  std::ofstream(path_ / name, std::ios::binary) << content;
  return path_ / name;
}

std::string TemporaryFolder::names() const {
  std::set<std::string> sorted;
  for (const auto& entry : std::filesystem::directory_iterator(path_))
    sorted.insert(entry.path().filename().string());
  std::string result;
  for (const std::string& name : sorted) result += name + " ";
  return result;
}

std::string readFile(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::string awaitFile(const std::filesystem::path& file) {
  std::string content;
  for (int i = 0; i < 2000 && content.empty(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    content = readFile(file);
  }
  return content;
}

}  // namespace kilntest
