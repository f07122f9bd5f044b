// A project in a folder of the test's own; the settings are empty again when the test ends.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include <kilnbase/util/db_filename.h>

#include "tests/support/TemporaryFolder.h"

namespace kilntest {

class Project {
 public:
  Project() {
    set(root(), "demo", root() + "cwd");
    std::filesystem::create_directory(folder_.path() / "demo");
  }
  ~Project() { set("", "", ""); }
  Project(const Project&) = delete;
  Project& operator=(const Project&) = delete;

  static void set(const std::string& path, const std::string& name, const std::string& cwd) {
    Db_set_project_path(path.c_str());
    Db_set_project_name(name.c_str());
    Db_set_mr_cwd(cwd.c_str());
    Db_init_paths();
  }

  // The project path.
  std::string root() const { return folder_.path().string() + "\\"; }
  // The path, as the library writes it, of what lies under the project's folder.
  std::string path(const std::string& name) const { return root() + "demo\\" + name; }

  // Makes an empty file under the project's folder; '/' separates the names.
  void makeFile(const std::string& name) const {
    const auto file = folder_.path() / "demo" / std::u8string(name.begin(), name.end());
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file).flush();
  }
  bool has(const std::string& name) const {
    return std::filesystem::exists(folder_.path() / "demo" / name);
  }

 private:
  TemporaryFolder folder_;
};

}  // namespace kilntest
