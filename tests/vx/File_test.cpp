#include <cstdio>
#include <gtest/gtest.h>
#include <string>

#include <vx/File.h>

TEST(File, LongPathsAreOpenedWithEitherSeparatorAndOnesWithAZeroRefused) {
  const std::string name(250, 'x');  // longer, with its folder, than MAX_PATH of Windows
  const std::string path = testing::TempDir() + name;
  std::FILE* file = vxOS::openFile(testing::TempDir() + "\\./" + name, "w");
  ASSERT_NE(nullptr, file);
  std::fputs("text", file);
  std::fclose(file);
  file = vxOS::openFile(path, "r");
  ASSERT_NE(nullptr, file);
  char text[8] = "";
  EXPECT_STREQ("text", std::fgets(text, sizeof text, file));
  std::fclose(file);
  EXPECT_EQ(nullptr, vxOS::openFile(path + '\0' + "y", "r"));
  std::remove(path.c_str());
}
