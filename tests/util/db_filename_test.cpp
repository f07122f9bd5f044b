#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include <kilnbase/util/db_filename.h>
#include <vx/Filename.h>
#include <vx/Process.h>

#include "tests/support/Environment.h"
#include "tests/support/Project.h"

using kilntest::KeptEnvironment;
using kilntest::Project;
using kilntest::setEnvironment;
using testing::UnorderedElementsAre;

namespace {

// Whether '/' separates names wherever '\' does.
const bool kTakesSlashes = vxOS::Filename::separator() == '/';

// The text that a call stores in an array of 264 characters; "unset" when the call stores nothing.
template <class Call>
std::string stored(Call call) {
  std::string out = "unset" + std::string(264 - 5, '\0') + std::string(16, '#');
  call(out.data());
  EXPECT_EQ(std::string(16, '#'), out.substr(264));
  return out.c_str();
}

std::string expanded(std::string& name, int type) {
  return stored([&](char* out) { expand_filename(out, name.data(), type); });
}

std::string taken(char* text) {
  const std::unique_ptr<char, decltype(&std::free)> owned(text, &std::free);
  return text ? text : "null";
}

// The names that are left, in order of reading.
std::vector<std::string> rest(Win32_Directory* directory) {
  std::vector<std::string> names;
  while (const Win32_DirectoryEntry* entry = win32_readdir(directory)) {
    EXPECT_EQ(std::strlen(entry->name), entry->length);
    names.emplace_back(entry->name);
  }
  return names;
}

class DbFilenameTest : public testing::Test {
 protected:
  Project project;
};

using DbFilenameDeathTest = DbFilenameTest;

}  // namespace

TEST_F(DbFilenameTest, EveryTypeHasItsFolderInTheOrderOfTheDefaults) {
  Project::set("D:\\work\\", "demo", "E:\\cwd");
  const Db_Path *path = Db_get_paths(), *standard = Db_get_default_paths();
  std::string rows;
  for (; standard->path; ++standard, ++path) {
    rows.append(standard->path).append(1, ' ').append(std::to_string(standard->type)).append(", ");
    EXPECT_EQ(standard->type, path->type);
    const std::string subdirectory = standard->path;
    EXPECT_EQ(subdirectory == "."        ? "D:\\work\\demo\\"
              : subdirectory == ".."     ? "D:\\work\\"
              : subdirectory == "..\\.." ? "E:\\cwd\\"
                                         : "D:\\work\\demo\\" + subdirectory + "\\",
              path->path);
  }
  EXPECT_EQ(
      "anim 0, pix 1, pix 21, mask 4, sdl 2, rib 25, . 6, . 11, . 19, .. 7, misc_data 9, option "
      "12, "
      "option 24, plot 15, wire 3, wire 20, wire 10, wire 8, sla 16, shader 17, texture 18, "
      "light 26, environment 27, layeredshader 45, switchshader 47, canvas 28, stencil 31, "
      "colors 38, shapes 32, imageLayers 39, textureLayers 40, geometryLayers 41, brushes 42, "
      "spTextures 43, spTextureScripts 44, ..\\.. 22, depth 29, sdl 30, stageset 34, cloud 35, "
      "wire 37, ..\\.. 36, reference 46, ",
      rows);
  EXPECT_EQ(nullptr, path->path);
  for (const int type : {-1, 5, 13, 14, 23, 33, 48}) EXPECT_EQ(nullptr, Db_default_path(type));
}

TEST_F(DbFilenameTest, ARelativeProjectLiesOnTheCurrentDriveAndAChangeWaitsForTheTable) {
  Db_set_project_path("work\\");
  EXPECT_EQ(project.path("wire\\"), Db_default_path(WIRE_DATA)->path);
  Db_init_paths();
  const int drive = vxOS::currentDrive();
  EXPECT_EQ(kTakesSlashes, drive == 0);
  const std::string prefix =
      drive == 0 ? "" : std::string(1, static_cast<char>('A' + drive - 1)) + ":";
  EXPECT_EQ(prefix + "work\\demo\\wire\\", Db_default_path(WIRE_DATA)->path);
  EXPECT_STREQ("work\\demo\\", Db_default_path(DIR_DATA)->path);
}

TEST_F(DbFilenameDeathTest, SettingsAreCopiedWholeOrNotAtAll) {
  const std::string longest(259, 'x'), tooLong(260, 'x');
  const struct {
    void (*set)(const char*);
    const char* (*get)();
  } table[] = {{Db_set_project_path, Db_get_project_path},
               {Db_set_project_name, Db_get_project_name},
               {Db_set_mr_cwd, Db_get_mr_cwd},
               {Db_set_current_project_path, Db_user_current_project_path}};
  for (const auto& [set, get] : table) {
    set(longest.c_str());
    EXPECT_EQ(longest, get());
    set(get() + 200);
    EXPECT_EQ(std::string(59, 'x'), get());
    EXPECT_DEBUG_DEATH(set(tooLong.c_str()), "fits");
    set(nullptr);
  }
  EXPECT_STREQ("", Db_user_current_project_path());
  Db_set_project_path(longest.c_str());
  Db_set_project_name(longest.c_str());
  EXPECT_EQ(longest + longest, Db_user_current_project_path());
  Db_set_current_project_name("other");
  EXPECT_STREQ("other", Db_user_current_project_path());
  Db_set_current_project_name(nullptr);
  Db_set_project_extension("one");
  Db_set_project_extension(Db_get_project_extension());
  EXPECT_STREQ("one", Db_get_project_extension());
  Db_set_project_extension(nullptr);
  EXPECT_EQ(nullptr, Db_get_project_extension());
}

TEST_F(DbFilenameDeathTest, TheFolderOfAPathEndsWithItsLastSeparator) {
  const struct {
    std::string path, folder;
  } table[] = {{"D:\\work\\wing", "D:\\work\\"},
               {"D:\\work\\", "D:\\work\\"},
               {"wing", "w"},
               {"\\wing", "\\"},
               {"", ""},
               {"a\\b/c", kTakesSlashes ? "a\\b/" : "a\\"},
               {"a/b", kTakesSlashes ? "a/" : "a"},
               {"http://host/wing", "http://host/"},
               {std::string(259, 'x') + "\\name", std::string(259, 'x') + "\\"}};
  for (const auto& [path, folder] : table) {
    EXPECT_EQ(folder, stored([&](char* out) { EXPECT_EQ(1, Db_make_dirname(out, path.c_str())); }));
  }
  EXPECT_EQ("unset", stored([](char* out) { EXPECT_EQ(0, Db_make_dirname(out, nullptr)); }));
  const std::string tooLong = std::string(260, 'x') + "\\";
  EXPECT_DEBUG_DEATH(
      EXPECT_EQ("", stored([&](char* out) { Db_make_dirname(out, tooLong.c_str()); })),
      "kLongestPath");
}

TEST_F(DbFilenameTest, RelativeNamesGoIntoTheFolderOfTheirTypeWhichIsMade) {
  const std::string wire = project.path("wire\\");
  const std::string full(260 - wire.size(), 'x');
  const struct {
    std::string name, path, left;  // left: the caller's text afterwards
  } table[] = {{"wing", wire + "wing", "wing"},
               {"\"my wing\"", wire + "my wing", "my wing"},
               {"\"\"C:\\wing", "C:\\wing", "C:\\wing"},
               {"wing\"", wire + "wing\"", "wing\""},
               {"", wire, ""},
               {"C:wing", "C:wing", "C:wing"},
               {"\\\\host\\wing", "\\\\host\\wing", "\\\\host\\wing"},
               {"/wing", (kTakesSlashes ? "" : wire) + "/wing", "/wing"},
               {"http://host/wing", "http://host/wing", "http://host/wing"},
               {"\"http://host\"", wire + "http://host", "http://host"},
               {"file:///wing", wire + "file:///wing", "file:///wing"},
               {full, wire + full, full},
               {full + "x", wire, full + "x"}};
  EXPECT_FALSE(project.has("wire"));
  for (auto [name, path, left] : table) {
    EXPECT_EQ(path, expanded(name, WIRE_DATA));
    EXPECT_EQ(left, name.c_str());
  }
  EXPECT_TRUE(project.has("wire"));
  EXPECT_EQ(project.path("pix\\"),
            stored([](char* out) { expand_filename(out, nullptr, PIX_DATA); }));
  std::string one = "cannot be made";
  Project::set(project.root() + "lost\\", "demo", "");
  EXPECT_EQ(project.root() + "lost\\demo\\wire\\" + one, expanded(one, WIRE_DATA));
  Project::set("", "", "");
  EXPECT_EQ(one, expanded(one, PROJ_DATA));
}

TEST_F(DbFilenameDeathTest, WhatDoesNotFitOrHasNoFolderGivesAnEmptyText) {
  std::string tooLong = "\\" + std::string(260, 'x'), one = "x";
  EXPECT_DEBUG_DEATH(EXPECT_EQ("", expanded(tooLong, WIRE_DATA)), "has_value");
  EXPECT_DEBUG_DEATH(EXPECT_EQ("", expanded(one, 5)), "has_value");
  Project::set("C:\\" + std::string(256, 'x'), std::string(259, 'x'), "");
  EXPECT_EQ(259u + 259u + 6u, std::strlen(Db_default_path(WIRE_DATA)->path));
  EXPECT_DEBUG_DEATH(EXPECT_EQ("", expanded(one, WIRE_DATA)), "has_value");
}

TEST_F(DbFilenameTest, TheInstallationIsNamedByTheEnvironmentOrHoldsTheProgram) {
  const KeptEnvironment kept("MORLA_LOCATION");
  kilntest::unsetEnvironment("MORLA_LOCATION");
  const std::string program(vxOS::programPath().view());
  const std::string installation =
      program.substr(0, program.find(vxOS::Filename::separator() + std::string("bin")));
  EXPECT_NE(program, installation);
  for (const std::string& location :
       {std::string("C:\\Kiln"), std::string(259, 'x'), std::string()}) {
    setEnvironment("MORLA_LOCATION", location);
    EXPECT_EQ(location, getMorlaPath());
  }
  setEnvironment("MORLA_LOCATION", std::string(260, 'x'));
  EXPECT_EQ(installation, getMorlaPath());
  kilntest::unsetEnvironment("MORLA_LOCATION");
  EXPECT_EQ(installation, getMorlaPath());
}

TEST_F(DbFilenameDeathTest, NamesAreCopiedAndTheirSeparatorsTurned) {
  EXPECT_EQ("a/b/c", taken(convertFilename("a\\b/c", 1)));
  EXPECT_EQ("a/b/c", taken(convertFilename("a\\b/c", -1)));
  EXPECT_EQ("a\\b\\c", taken(convertFilename("a\\b/c", 0)));
  EXPECT_EQ("null", taken(convertFilename(nullptr, 0)));
  EXPECT_EQ("null", taken(ExpandPathname(nullptr)));
  const KeptEnvironment kept("USER");
  setEnvironment("USER", std::string(1024, 'u'));
  const std::string user(1023, 'u');
  for (const std::string& name : {std::string("~pat/wing"), "~" + user + "/x", "~" + user,
                                  std::string(2000, 'x'), std::string()}) {
    EXPECT_EQ(name, taken(ExpandPathname(name.c_str())));
  }
  for (const std::string& name : {"~u" + user, std::string("~"), std::string("~/wing")}) {
    EXPECT_DEATH(taken(ExpandPathname(name.c_str())), "user name of 1024 characters is too long");
  }
  setEnvironment("USER", user);
  EXPECT_EQ("~/wing", taken(ExpandPathname("~/wing")));
}

TEST_F(DbFilenameDeathTest, PathsTellFilesFromFolders) {
  project.makeFile("wire/wing");
  const std::string folder = project.path("wire"), file = project.path("wire\\wing");
  // Where the system has no drives, a file has the name of one, which a separator makes a folder.
  const std::filesystem::path here = std::filesystem::current_path();
  const kilntest::TemporaryFolder drives;
  std::filesystem::current_path(drives.path());
  std::ofstream("C:").flush();
  const int drive = kTakesSlashes ? SB_NOTHING : SB_DIRECTORY;
  const std::pair<std::string, int> table[] = {{file, SB_REGULAR_FILE},
                                               {folder, SB_DIRECTORY},
                                               {folder + "\\", SB_DIRECTORY},
                                               {folder + (kTakesSlashes ? "/" : ""), SB_DIRECTORY},
                                               {file + "\\", SB_REGULAR_FILE},
                                               {folder + "\\lost", SB_NOTHING},
                                               {kTakesSlashes ? "/dev/null" : "NUL", SB_DEVICE},
                                               {"C:", drive},
                                               {"C:\\", drive},
                                               {"", SB_NOTHING},
                                               {std::string(260, 'x'), SB_NOTHING}};
  for (const auto& [path, kind] : table) EXPECT_EQ(kind, SB_FileExists(path.c_str())) << path;
  std::filesystem::current_path(here);
  EXPECT_EQ(SB_NOTHING, SB_FileExists(nullptr));
  EXPECT_DEATH(SB_FileExists(std::string(261, 'x').c_str()),
               "SB_FileExists: a path of 261 characters is too long");
}

TEST_F(DbFilenameTest, AFolderIsReadOnceAndWalkedFreely) {
  for (const char* name : {"a", "\xc3\xbc b", "folder/x"})
    project.makeFile(std::string("w/") + name);
  std::string path = project.path("w");
  Win32_Directory* directory = win32_opendir(path.data());
  ASSERT_NE(nullptr, directory);
  project.makeFile("w/late");
  const std::vector<std::string> names = rest(directory);
  EXPECT_THAT(names, UnorderedElementsAre(".", "..", "a", "\xc3\xbc b", "folder"));
  EXPECT_EQ(nullptr, win32_readdir(directory));
  const long end = win32_telldir(directory);
  win32_rewinddir(directory);
  const std::uint32_t first = win32_readdir(directory)->number;
  const long second = win32_telldir(directory);
  path.resize(260, '\\');
  Win32_Directory* other = win32_opendir(path.data());
  EXPECT_EQ(first + 1, win32_readdir(other)->number);
  EXPECT_EQ(first + 2, win32_readdir(directory)->number);
  win32_seekdir(directory, second);
  for (const long nowhere : {-1L, second - 1, end + 1}) win32_seekdir(directory, nowhere);
  EXPECT_EQ(second, win32_telldir(directory));
  EXPECT_EQ(std::vector(names.begin() + 1, names.end()), rest(directory));
  win32_seekdir(directory, end);
  EXPECT_EQ(nullptr, win32_readdir(directory));
  EXPECT_EQ(1, win32_closedir(directory));
  EXPECT_EQ(1, win32_closedir(other));
}

TEST_F(DbFilenameTest, OnlyFoldersAreRead) {
  project.makeFile("wing");
  for (std::string path : {project.path("wing"), project.path("lost"), std::string(261, '/')}) {
    EXPECT_EQ(nullptr, win32_opendir(path.data())) << path;
  }
  EXPECT_EQ(nullptr, win32_opendir(nullptr));
  EXPECT_EQ(nullptr, win32_readdir(nullptr));
  char drive[] = {'C', ':', '\0', '#'};
  Win32_Directory* directory = win32_opendir(drive);
  EXPECT_STREQ("C:\\", drive);
  EXPECT_EQ(kTakesSlashes, directory == nullptr);
  EXPECT_EQ(1, win32_closedir(directory));
}
