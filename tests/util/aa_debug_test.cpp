#include <climits>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>

#include <kilnbase/util/aa_debug.h>
#include <vx/File.h>

using namespace testing::internal;

namespace {

std::shared_ptr<std::FILE> open(const std::string& file, const char* mode) {
  return {vxOS::openFile(file.c_str(), mode), std::fclose};
}

std::string contents(const std::string& file) {
  char text[100] = "";
  return {text, std::fread(text, 1, sizeof text, open(file, "r").get())};
}

}  // namespace

TEST(DebugChannel, ModesWithoutAFileGoToTheStandardStreams) {
  const char* name = "not set";
  for (const int mode : std::initializer_list<int>{AA_TO_ERROR, 4, -1, AA_TO_OUTPUT}) {
    AA_set_print_out(mode, nullptr);
    CaptureStdout();
    CaptureStderr();
    EXPECT_EQ(5, AA_debug_print("%s-%d", "abc", 1));
    EXPECT_EQ(mode == AA_TO_OUTPUT ? "abc-1" : "", GetCapturedStdout());
    EXPECT_EQ(mode == AA_TO_OUTPUT ? "" : "abc-1", GetCapturedStderr());
    EXPECT_EQ(mode, AA_get_print_out(&name));
    EXPECT_STREQ("not set", name);
  }
}

TEST(DebugChannel, AFileThatCouldNotBeOpenedIsStillToBeEmptied) {
  const std::filesystem::path folder = testing::TempDir() + "folder to come";
  const std::string file = (folder / "debug.txt").string();
  AA_set_print_out(AA_TO_FILE, file.c_str());
  CaptureStdout();
  AA_debug_print("shown");
  EXPECT_EQ("shown", GetCapturedStdout());
  std::filesystem::create_directory(folder);
  std::fputs("old\n", open(file, "w").get());
  AA_debug_print("new\n");
  AA_set_print_out(AA_TO_ERROR, nullptr);
  EXPECT_EQ("new\n", contents(file));
  std::filesystem::remove_all(folder);
}

TEST(DebugChannel, AFileIsEmptiedTheFirstTimeAndAStreamIsTheCallers) {
  const std::string first = testing::TempDir() + "debug.txt";
  const std::string second = testing::TempDir() + "\xC3\xA9t\xC3\xA9.txt";
  std::fputs("old\n", open(first, "w").get());
  AA_set_print_out(AA_TO_FILE, first.c_str());
  const char* name = nullptr;
  EXPECT_EQ(AA_TO_FILE, AA_get_print_out(&name));
  EXPECT_EQ(first, name);
  EXPECT_EQ("old\n", contents(first)) << "opened before the first output";
  AA_debug_print("1\n2\n");
  EXPECT_EQ("1\n2\n", contents(first)) << "not flushed";
  for (const std::string& file : {second, first}) {
    AA_set_print_out(AA_TO_FILE, std::string(file).c_str());
    AA_debug_print("3\n");
  }
  EXPECT_EQ("1\n2\n3\n", contents(first));
  AA_set_print_out(AA_TO_STREAM, nullptr);
  EXPECT_EQ(0, std::remove(first.c_str())) << "not closed";
  AA_debug_print("4\n");
  auto stream = open(second, "a");
  AA_set_print_out(AA_TO_STREAM, stream.get());
  EXPECT_EQ("4\n", contents(first)) << "a null stream has left the choice";
  AA_set_print_out(AA_TO_STREAM, nullptr);
  AA_debug_print("channel ");
  AA_set_print_out(AA_TO_ERROR, nullptr);
  std::fputs("caller", stream.get());
  stream.reset();
  EXPECT_EQ("3\nchannel caller", contents(second));
}

TEST(DebugChannel, IndentsThreeBlanksALevelAndNothingBelowOne) {
  CaptureStderr();
  for (const int level : {-2, -2, -1, -1, -1}) AA_set_indent(level);
  EXPECT_EQ(34, Aa_print_assert("a.c", 12, "no\n50%"));
  for (const int level : {INT_MAX, -1}) AA_set_indent(level);  // wraps around to INT_MIN
  EXPECT_EQ(1, AA_indent());
  for (const int level : {3, -1}) AA_set_indent(level);
  AA_set_print_out(AA_TO_FILE, nullptr);
  EXPECT_EQ(AA_TO_ERROR, AA_get_print_out(nullptr));
  EXPECT_EQ("   ASSERT (file a.c, line 12): no\n50%            Cannot open debug output file\n",
            GetCapturedStderr());
  AA_set_indent(0);
}
