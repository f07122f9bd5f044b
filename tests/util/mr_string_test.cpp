#include <cstring>
#include <gtest/gtest.h>
#include <string>

#include <kilnbase/util/mr_string.h>

namespace {

std::string changed(const char* text, auto change, auto... c) {
  change(nullptr, c...);
  char buffer[32];
  change(std::strcpy(buffer, text), c...);
  return buffer;
}

}  // namespace

TEST(Strings, LoseCharactersAtTheEndsOrEverywhere) {
  const struct {
    const char *text, *ends, *end, *all;
  } cases[] = {{"", "", "", ""}, {"xx", "", "", ""}, {"xxaxbx", "axb", "xxaxb", "ab"}};
  char copied[32] = "before";
  for (const auto& each : cases) {
    EXPECT_EQ(each.ends, changed(each.text, MR_string_leading_trailing_remove, 'x'));
    EXPECT_EQ(each.end, changed(each.text, MR_string_trailing_remove, 'x'));
    EXPECT_EQ(each.all, changed(each.text, MR_string_stripchar, 'x'));
    MR_string_strcpy_stripchar(copied, each.text, 'x');
    EXPECT_STREQ(each.all, copied);
  }
  MR_string_strcpy_stripchar(nullptr, copied, 'x');
  MR_string_strcpy_stripchar(copied, nullptr, 'x');
  EXPECT_STREQ("", copied);
}

// Integers lose their zeros, too.
TEST(Strings, NumbersLoseTheirZerosAtTheEnd) {
  const char* const cases[][2] = {{"1.500", "1.5"}, {"2.000", "2.0"}, {"000", "0"}, {"100", "1"},
                                  {"1.05", "1.05"}, {"", "0"},        {"5.", "5.0"}};
  for (const auto& [text, shortened] : cases) {
    EXPECT_EQ(shortened, changed(text, MR_string_number_de_zero)) << text;
  }
}

TEST(Strings, IntegersAsPointersAreZeroExtended) {
  EXPECT_EQ(reinterpret_cast<void*>(0xFFFFFFFFULL), MR_int2ptr(-1));
  EXPECT_EQ(-1, MR_ptr2int(reinterpret_cast<void*>(0x5FFFFFFFFULL)));
}
