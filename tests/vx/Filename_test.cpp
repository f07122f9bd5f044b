#include <gtest/gtest.h>
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
  std::set<std::string> texts;
  std::set<char> seen[36];
  for (int i = 0; i < 400; ++i) {
    const CString text = vxOS::Uuid::generate().asString();
    ASSERT_EQ(36U, text.length());
    texts.insert(text.c_str());
    for (std::size_t k = 0; k < 36; ++k) seen[k].insert(text[k]);
  }
  EXPECT_EQ(400U, texts.size());
  for (const std::size_t k : {8, 13, 18, 23}) EXPECT_EQ(std::set({'-'}), seen[k]) << k;
  EXPECT_EQ(std::set({'4'}), seen[14]);
  EXPECT_EQ(std::set({'8', '9', 'a', 'b'}), seen[19]);
  for (const std::size_t k : {0, 7, 9, 12, 15, 17, 20, 22, 24, 35})
    EXPECT_EQ("0123456789abcdef", std::string(seen[k].begin(), seen[k].end())) << k;
}
