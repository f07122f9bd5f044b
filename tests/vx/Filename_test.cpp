#include <gtest/gtest.h>
#include <regex>
#include <set>
#include <string>

#include <vx/Filename.h>
#include <vx/Uuid.h>

using vxOS::Filename;
using vxOS::URL;
using vxString::CString;

TEST(Filename, IsAbsoluteWithALeadingSeparatorOrADriveAndASeparator) {
  for (const char* path : {"/", "\\", "/a", "\\\\server\\share", "C:\\a", "z:/"})
    EXPECT_TRUE(Filename(CString(path)).isAbsolute()) << path;
  for (const char* path : {"", "a/b", "C:", "C:a", "1:\\", "CD:\\", ":/", "a:b/"})
    EXPECT_FALSE(Filename(CString(path)).isAbsolute()) << path;
  EXPECT_FALSE(Filename(CString(std::string_view("C:\0\\", 4))).isAbsolute());
}

TEST(Filename, JoinsWithOneSeparator) {
  const struct {
    const char *folder, *name, *path;  // '?' stands for the system's separator
  } table[] = {{"a", "b", "a?b"},        {"a/", "b", "a/b"},     {"a\\", "/b", "a\\b"},
               {"a//", "\\b", "a/b"},    {"", "b", "b"},         {"", "/b", "/b"},
               {"/", "b", "/b"},         {"C:\\", "b", "C:\\b"}, {"a", "", "a?"},
               {"a/b", "c/d", "a/b?c/d"}};
  const CString separator = Filename::separator() == '\\' ? "\\" : "/";
  for (const auto& row : table) {
    const CString path = CString(row.path).replaced("?", separator);
    EXPECT_EQ(path, Filename::join(row.folder, row.name)) << row.path;
    EXPECT_EQ(path, Filename(row.folder, row.name).path()) << row.path;
  }
}

TEST(Url, IsAFileWithoutSchemeAndWithTheSchemeFile) {
  for (const char* text : {"", "a.txt", "/a", "C:\\a", "c://a", "file:///a", "FILE://a", "://a",
                           "http:/a", "1http://a", "a b://c", "dir/http://a"})
    EXPECT_TRUE(URL(text).isLocalFile()) << text;
  for (const char* text : {"http://a", "x-1.+://", "files://a"})
    EXPECT_FALSE(URL(text).isLocalFile()) << text;
}

TEST(Uuid, IsRandomOfVersionFourAndDiffersEachTime) {
  std::set<std::string> seen;
  std::set<char> digits[36];
  for (int i = 0; i < 400; ++i) {
    const CString text = vxOS::Uuid::generate().asString();
    EXPECT_TRUE(std::regex_match(
        text.c_str(),
        std::regex("([0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12})")))
        << text.c_str();
    EXPECT_TRUE(seen.insert(text.c_str()).second);
    for (std::size_t digit = 0; digit < 36; ++digit) digits[digit].insert(text[digit]);
  }
  for (const std::size_t digit : {0U, 15U, 20U, 35U}) EXPECT_EQ(16U, digits[digit].size()) << digit;
}
