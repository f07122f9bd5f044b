#include <cstring>
#include <gtest/gtest.h>
#include <string>

#include <kilnbase/util/mr_string.h>

namespace {

template <class Change>
std::string changed(const char* text, Change change) {
  char buffer[32];
  std::strcpy(buffer, text);
  change(buffer);
  return buffer;
}

}  // namespace

TEST(Strings, LoseCharactersAtTheEndsOrEverywhere) {
  const struct {
    const char* text;
    const char* ends;
    const char* end;
    const char* all;
  } cases[] = {{"", "", "", ""},
               {"xx", "", "", ""},
               {"axb", "axb", "axb", "ab"},
               {"xxaxbx", "axb", "xxaxb", "ab"},
               {"ax", "a", "a", "a"},
               {"xa", "a", "xa", "a"}};
  for (const auto& each : cases) {
    EXPECT_EQ(each.ends,
              changed(each.text, [](char* s) { MR_string_leading_trailing_remove(s, 'x'); }));
    EXPECT_EQ(each.end, changed(each.text, [](char* s) { MR_string_trailing_remove(s, 'x'); }));
    EXPECT_EQ(each.all, changed(each.text, [](char* s) { MR_string_stripchar(s, 'x'); }));
    EXPECT_EQ(each.all,
              changed("before", [&](char* s) { MR_string_strcpy_stripchar(s, each.text, 'x'); }));
  }
  EXPECT_EQ("", changed("before", [](char* s) { MR_string_strcpy_stripchar(s, nullptr, 'x'); }));
}

// Integers are not spared.
TEST(Strings, NumbersLoseTheirZerosAtTheEnd) {
  const char* const cases[][2] = {{"1.500", "1.5"}, {"2.000", "2.0"}, {"000", "0"}, {"100", "1"},
                                  {"1e10", "1e1"},  {"0.0", "0.0"},   {"", "0"},    {"5.", "5.0"},
                                  {"1.05", "1.05"}, {"-0", "-"}};
  for (const auto& [text, shortened] : cases) {
    EXPECT_EQ(shortened, changed(text, MR_string_number_de_zero)) << text;
  }
}

TEST(Strings, IntegersAsPointersAreZeroExtended) {
  EXPECT_EQ(reinterpret_cast<void*>(0xFFFFFFFFULL), MR_int2ptr(-1));
  EXPECT_EQ(-1, MR_ptr2int(reinterpret_cast<void*>(0x5FFFFFFFFULL)));
}
