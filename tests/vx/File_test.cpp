#include <atomic>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <vector>

#include <vx/File.h>
#include <vx/Filename.h>

#include "tests/support/Environment.h"
#include "tests/support/TemporaryFolder.h"

using vxOS::File;
using vxOS::Filename;
using vxOS::FileStatus;
using vxString::CString;

namespace {

const CString kZero(std::string_view("\0", 1));

FileStatus query(const CString& path) {
  FileStatus status;
  const vxUtil::Error error = File::query(path, status);
  EXPECT_EQ(0, error.code()) << error.message().c_str();
  return status;
}

class FileTest : public testing::Test {
 protected:
  CString path(const CString& name) const { return root_ + "\\" + name; }

  const kilntest::TemporaryFolder folder_;
  const CString root_ = folder_.path().string().c_str();
};

}  // namespace

TEST_F(FileTest, QueryTellsKindSizeAndTime) {
  std::filesystem::resize_file(folder_.write("big", ""), 5'000'000'000);
  const FileStatus file = query(path("big")), folder = query(root_ + "\\");
  EXPECT_EQ(unsigned{S_IFREG}, file.type);
  EXPECT_FALSE(file.isDirectory);
  EXPECT_EQ(5'000'000'000U, file.size);
  EXPECT_NEAR(static_cast<double>(std::time(nullptr)), static_cast<double>(file.modified), 100.0);
  EXPECT_TRUE(folder.isDirectory);
  EXPECT_EQ(unsigned{S_IFDIR}, folder.type);
}

TEST_F(FileTest, WhereThereIsNothingQuerySaysSoAndOthersNameThePath) {
  folder_.write("file", "");
  for (const CString& nothing :
       {CString(), path("no"), path("no/no"), path("file/no"), path("file") + kZero}) {
    FileStatus status = {.exists = true};
    EXPECT_EQ(0, File::query(nothing, status).code()) << nothing.c_str();
    EXPECT_FALSE(status.exists) << nothing.c_str();
    EXPECT_FALSE(File::isWritable(nothing)) << nothing.c_str();
    EXPECT_THAT(File::remove(nothing).message().c_str(),
                testing::StartsWith(("cannot delete \"" + nothing).c_str()));
    vxOS::FilesystemStatus filesystem;
    EXPECT_FALSE(vxOS::Filesystem::stat(nothing, filesystem)) << nothing.c_str();
  }
  EXPECT_NE(0, File::remove(root_).code());
  EXPECT_EQ(0, File::remove(path("file")).code());
  EXPECT_FALSE(query(path("file")).exists);
}

TEST_F(FileTest, FoldersAreMadeWithTheirParentsAndOnesThatExistAreFine) {
  const CString name(std::string(120, 'x').c_str());  // a path longer than MAX_PATH of Windows
  const CString longPath = path("K\xC3\xB6ln/" + name + "\\" + name + "//" + name + "/");
  const CString root(folder_.path().root_path().string().c_str());
  for (const CString& folder : {longPath, longPath, root_, path("a/../b"), root}) {
    EXPECT_EQ(0, File::makeDirectoryAll(folder).code()) << folder.c_str();
    EXPECT_TRUE(query(folder).isDirectory) << folder.c_str();
    EXPECT_EQ(0, Filename(folder).makeDir().code()) << folder.c_str();
  }
  EXPECT_NE(0, Filename(path("c/d")).makeDir().code());
  EXPECT_FALSE(query(path("c")).exists);
  EXPECT_EQ(0, Filename(path("c")).makeDir().code());
  folder_.write("file", "kept");
  for (const CString& impossible : {CString(), path("file"), path("file/d/e"), path("e") + kZero}) {
    EXPECT_NE(0, File::makeDirectoryAll(impossible).code()) << impossible.c_str();
    EXPECT_NE(0, Filename(impossible).makeDir().code()) << impossible.c_str();
  }
  EXPECT_FALSE(query(path("e")).exists);
  EXPECT_EQ(4U, query(path("file")).size);
}

TEST_F(FileTest, SeveralMayMakeTheSameFoldersAtTheSameTime) {
  for (int round = 0; round < 20; ++round) {
    const CString folder = path(CString::format("%d/b/c/d/e", round));
    std::atomic<int> failures = 0;
    std::vector<std::thread> makers;
    for (int i = 0; i < 4; ++i)
      makers.emplace_back([&] { failures += File::makeDirectoryAll(folder) ? 1 : 0; });
    for (std::thread& maker : makers) maker.join();
    EXPECT_EQ(0, failures);
  }
}

TEST_F(FileTest, TemporaryFilesAreNewAndStandInTheFolderOfTheEnvironment) {
  const kilntest::KeptEnvironment kept("TMPDIR");
  kilntest::setEnvironment("TMPDIR", root_.c_str());
  const CString first = vxOS::createTmpFilename(), second = vxOS::createTmpFilename();
  EXPECT_NE(first, second);
  for (const CString& file : {first, second}) {
    EXPECT_TRUE(file.startsWith(root_)) << file.c_str();
    EXPECT_TRUE(File::isWritable(file)) << file.c_str();
  }
  kilntest::setEnvironment("TMPDIR", path("missing").c_str());
  EXPECT_EQ(CString(), vxOS::createTmpFilename());
  kilntest::setEnvironment("TMPDIR", "");
  EXPECT_EQ(Filename::separator() == '/' ? "/tmp" : "c:\\Temp", vxOS::temporaryDirectory());
}

TEST_F(FileTest, FileSystemsHaveRoom) {
  folder_.write("file", "");
  const auto space = std::filesystem::space(folder_.path());
  for (const CString& place : {root_, path("file")}) {
    vxOS::FilesystemStatus status;
    EXPECT_TRUE(vxOS::Filesystem::stat(place, status)) << place.c_str();
    EXPECT_EQ(space.capacity / 1024, status.totalKilobytes);
    EXPECT_NEAR(static_cast<double>(space.available) / 1024,
                static_cast<double>(status.freeKilobytes), 1e6);
  }
}

TEST_F(FileTest, FilesAreOpenedWithEveryModeAndOnesWithAZeroInTheirPathRefused) {
  const std::string name(250, 'x');  // longer, with its folder, than MAX_PATH of Windows
  const CString file = path(".\\./") + name.c_str();
  const struct {
    const char* mode;
    bool works;
    const char* contentAfter;
  } calls[] = {{"r", false, ""},     {"r+", false, ""},  {"wx", true, "w"},  {"wx", false, "w"},
               {"w+bx", false, "w"}, {"ab", true, "wa"}, {"rb", true, "wa"}, {"a+", true, "waa"},
               {"r+", true, "raa"},  {"w", true, "w"},   {"q", false, "w"},  {"", false, "w"}};
  for (const auto& [mode, works, contentAfter] : calls) {
    std::FILE* stream = vxOS::openFile(file.view(), mode);
    EXPECT_EQ(works, stream != nullptr) << mode;
    if (stream == nullptr) continue;
    std::fputc(mode[0], stream);
    std::fclose(stream);
    EXPECT_EQ(contentAfter, kilntest::readFile(folder_.path() / name)) << mode;
  }
  EXPECT_EQ(nullptr, vxOS::openFile((file + kZero + "y").view(), "r"));
  EXPECT_EQ(nullptr, vxOS::openFile(root_.view(), "w"));
}
