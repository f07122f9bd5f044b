#include <gtest/gtest.h>

#include <kilnbase/services/capitalization.h>

using vxKilnBase::toBookTitleCapitalization;
using vxKilnBase::toSentenceCapitalization;
using vxString::CString;

TEST(Capitalization, TitlesAndSentencesKeepMinorWordsSmallExceptAtTheirEnds) {
  const struct {
    CString text, title, sentence;
  } table[] = {
      {"the lord of the rings", "The Lord of the Rings", "The lord of the rings"},
      {"the Lord OF the RINGS", "The Lord of the Rings", "The Lord of the Rings"},
      {"what it is FOR", "What it is For", "What it is for"},
      {"* to the (end) *", "* To the (end) *", "* To the (end) *"},
      {"  a\tNURBS  curve ", "  A Nurbs  Curve ", "  A Nurbs  curve "},
      {"3d and 2D", "3d and 2d", "3d and 2d"},
      {"the - Is - iS -A", "The - is - is -a", "The - is - is -a"},
      {"\xc3\x89tat is -- \xc3\xa9", "\xc3\x89tat Is -- \xc3\xa9", "\xc3\x89tat is -- \xc3\xa9"},
      {"into in not with yet b", "Into in not with yet B", "Into in not with yet b"},
      {"b An at but HAS On or So b", "B an at but has on or so B", "B an at but has on or so b"},
      {"-- +-", "-- +-", "-- +-"},
      {"", "", ""},
      {" ", " ", " "}};
  for (const auto& [text, title, sentence] : table) {
    EXPECT_EQ(title, toBookTitleCapitalization(text));
    EXPECT_EQ(sentence, toSentenceCapitalization(text));
    EXPECT_EQ(title.asWide(), toBookTitleCapitalization(text.asWide()));
    EXPECT_EQ(sentence.asWide(), toSentenceCapitalization(text.asWide()));
  }
}
