#include <climits>
#include <cstdio>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include <kilnbase/util/aa_debug.h>
#include <vx/File.h>

using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

namespace {

struct Close {
  void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, Close>;

// Leaves the channel as it was at the start, and the files of the test away.
class DebugChannel : public testing::Test {
 protected:
  ~DebugChannel() override {
    AA_set_print_out(AA_TO_ERROR, nullptr);
    AA_set_indent(0);
    for (const std::string& file : files_) std::filesystem::remove(pathOf(file));
  }

  // The name is new to the process.
  std::string newFile(const std::string& name = "debug") {
    static int count = 0;
    files_.push_back(testing::TempDir() + name + std::to_string(count++) + ".txt");
    const Stream stream(vxOS::openFile(files_.back().c_str(), "w"));
    std::fputs("old\n", stream.get());
    return files_.back();
  }

  static std::filesystem::path pathOf(const std::string& file) {
    return reinterpret_cast<const char8_t*>(file.c_str());
  }

  static std::string contents(const std::string& file) {
    const Stream stream(vxOS::openFile(file.c_str(), "r"));
    std::string text;
    for (int c; stream && (c = std::fgetc(stream.get())) != EOF;) text += static_cast<char>(c);
    return text;
  }

  static const char* name() {
    const char* name = "not set";
    AA_get_print_out(&name);
    return name;
  }

  std::vector<std::string> files_;
};

std::string printedToError(int mode) {
  AA_set_print_out(mode, nullptr);
  CaptureStderr();
  EXPECT_EQ(5, AA_debug_print("%s-%d", "abc", 1));
  return GetCapturedStderr();
}

}  // namespace

TEST_F(DebugChannel, ModesWithoutAFileGoToTheStandardStreams) {
  EXPECT_EQ(AA_TO_ERROR, AA_get_print_out(nullptr));
  for (const int mode : {1, 4, -1, INT_MAX}) {
    EXPECT_EQ("abc-1", printedToError(mode));
    EXPECT_EQ(mode, AA_get_print_out(nullptr));
    EXPECT_STREQ("not set", name());
  }
  CaptureStdout();
  EXPECT_EQ("", printedToError(AA_TO_OUTPUT));
  EXPECT_EQ("abc-1", GetCapturedStdout());
}

TEST_F(DebugChannel, AFileIsEmptiedTheFirstTimeAndThenAppendedTo) {
  const std::string first = newFile();
  const std::string second = newFile("\xC3\xA9t\xC3\xA9");
  AA_set_print_out(AA_TO_FILE, first.c_str());
  EXPECT_EQ(AA_TO_FILE, AA_get_print_out(nullptr));
  EXPECT_EQ(first, name());
  EXPECT_EQ("old\n", contents(first)) << "opened before the first output";
  AA_debug_print("1\n");
  AA_debug_print("2\n");
  EXPECT_EQ("1\n2\n", contents(first)) << "not flushed";
  AA_set_print_out(AA_TO_FILE, second.c_str());
  AA_debug_print("other\n");
  AA_set_print_out(AA_TO_FILE, std::string(first).c_str());
  AA_debug_print("3\n");
  AA_set_print_out(AA_TO_FILE, first.c_str());
  AA_debug_print("4\n");
  AA_set_print_out(AA_TO_STREAM, nullptr);
  EXPECT_EQ("1\n2\n3\n4\n", contents(first));
  EXPECT_TRUE(std::filesystem::remove(pathOf(first))) << "still open";
  AA_debug_print("5\n");
  AA_set_print_out(AA_TO_OUTPUT, nullptr);
  EXPECT_EQ("5\n", contents(first));
  EXPECT_EQ("other\n", contents(second));
  EXPECT_TRUE(std::filesystem::remove(pathOf(first))) << "still open";
  EXPECT_TRUE(std::filesystem::remove(pathOf(second)));
}

TEST_F(DebugChannel, AFileThatCannotBeOpenedIsReplacedByStandardOutput) {
  AA_set_print_out(AA_TO_FILE, (testing::TempDir() + "no/such/folder").c_str());
  CaptureStdout();
  AA_debug_print("lost");
  AA_debug_print("?");
  EXPECT_EQ("lost?", GetCapturedStdout());
}

TEST_F(DebugChannel, AStreamStaysTheCallers) {
  const std::string file = newFile();
  const Stream stream(std::fopen(file.c_str(), "w"));
  AA_set_print_out(AA_TO_STREAM, stream.get());
  AA_debug_print("channel ");
  AA_set_print_out(AA_TO_STREAM, nullptr);
  EXPECT_EQ(AA_TO_STREAM, AA_get_print_out(nullptr));
  EXPECT_STREQ("not set", name());
  AA_debug_print("and ");
  AA_set_print_out(AA_TO_OUTPUT, nullptr);
  std::fputs("caller", stream.get());
  std::fflush(stream.get());
  EXPECT_EQ("channel and caller", contents(file));
}

TEST_F(DebugChannel, IndentsThreeBlanksALevelAndNothingBelowOne) {
  CaptureStderr();
  AA_set_indent(-2);
  AA_set_indent(-2);
  EXPECT_EQ(1, AA_indent());
  AA_set_indent(-1);
  AA_set_indent(-1);
  AA_set_indent(-1);
  EXPECT_EQ(34, Aa_print_assert("a.c", 12, "no\n50%"));
  AA_set_indent(INT_MAX);
  AA_set_indent(-1);  // wraps around to INT_MIN
  EXPECT_EQ(1, AA_indent());
  AA_set_indent(3);
  AA_set_indent(-1);
  AA_set_print_out(AA_TO_FILE, nullptr);
  EXPECT_EQ(AA_TO_ERROR, AA_get_print_out(nullptr));
  EXPECT_EQ("   ASSERT (file a.c, line 12): no\n50%            Cannot open debug output file\n",
            GetCapturedStderr());
}
