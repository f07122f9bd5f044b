#include <climits>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>

#include <kilnbase/util/aa_debug.h>
#include <vx/File.h>

using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

namespace {

// Leaves the channel as it was at the start.
class DebugChannel : public testing::Test {
 protected:
  ~DebugChannel() override {
    AA_set_print_out(AA_TO_ERROR, nullptr);
    AA_set_indent(0);
  }

  static std::shared_ptr<std::FILE> open(const std::string& file, const char* mode) {
    return {vxOS::openFile(file.c_str(), mode), std::fclose};
  }
  static std::string contents(const std::string& file) {
    char text[100] = "";
    return {text, std::fread(text, 1, sizeof text, open(file, "r").get())};
  }
  // And whether the file was closed.
  static std::string takeContents(const std::string& file) {
    const std::string text = contents(file);
    const bool removed = std::filesystem::remove(reinterpret_cast<const char8_t*>(file.c_str()));
    return removed ? text : "still open";
  }
};

}  // namespace

TEST_F(DebugChannel, ModesWithoutAFileGoToTheStandardStreams) {
  const char* name = "not set";
  for (const int mode : std::initializer_list<int>{AA_TO_ERROR, 4, -1, INT_MAX, AA_TO_OUTPUT}) {
    AA_set_print_out(mode, nullptr);
    CaptureStdout();
    CaptureStderr();
    EXPECT_EQ(5, AA_debug_print("%s-%d", "abc", 1));
    EXPECT_EQ(mode == AA_TO_OUTPUT ? "abc-1" : "", GetCapturedStdout());
    EXPECT_EQ(mode == AA_TO_OUTPUT ? "" : "abc-1", GetCapturedStderr());
    EXPECT_EQ(mode, AA_get_print_out(&name));
    EXPECT_STREQ("not set", name);
  }
  AA_set_print_out(AA_TO_FILE, (testing::TempDir() + "no/such/folder").c_str());
  CaptureStdout();
  AA_debug_print("lost?");
  EXPECT_EQ("lost?", GetCapturedStdout());
}

TEST_F(DebugChannel, AFileIsEmptiedTheFirstTimeAndAStreamIsTheCallers) {
  const std::string first = testing::TempDir() + "debug.txt";
  const std::string second = testing::TempDir() + "\xC3\xA9t\xC3\xA9.txt";
  std::fputs("old\n", open(first, "w").get());
  const auto print = [](int mode, const void* nameOrStream, const char* text) {
    AA_set_print_out(mode, nameOrStream);
    AA_debug_print("%s", text);
  };
  AA_set_print_out(AA_TO_FILE, first.c_str());
  const char* name = nullptr;
  EXPECT_EQ(AA_TO_FILE, AA_get_print_out(&name));
  EXPECT_EQ(first, name);
  EXPECT_EQ("old\n", contents(first)) << "opened before the first output";
  AA_debug_print("1\n2\n");
  EXPECT_EQ("1\n2\n", contents(first)) << "not flushed";
  print(AA_TO_FILE, second.c_str(), "other\n");
  for (const char* const line : {"3\n", "4\n"}) print(AA_TO_FILE, std::string(first).c_str(), line);
  AA_set_print_out(AA_TO_STREAM, nullptr);
  EXPECT_EQ("1\n2\n3\n4\n", takeContents(first));
  AA_debug_print("5\n");
  AA_set_print_out(AA_TO_OUTPUT, nullptr);
  EXPECT_EQ("5\n", takeContents(first));
  EXPECT_EQ("other\n", contents(second));

  auto stream = open(second, "w");
  print(AA_TO_STREAM, stream.get(), "channel ");
  print(AA_TO_STREAM, nullptr, "and ");
  EXPECT_EQ(AA_TO_STREAM, AA_get_print_out(nullptr));
  AA_set_print_out(AA_TO_OUTPUT, nullptr);
  std::fputs("caller", stream.get());
  stream.reset();
  EXPECT_EQ("channel and caller", takeContents(second));
}

TEST_F(DebugChannel, IndentsThreeBlanksALevelAndNothingBelowOne) {
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
}
