#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>

#include <vx/String.h>

using vxString::CString;
using vxString::IString;

template <class String>
struct StringOf : testing::Test {};
using BothStrings = testing::Types<CString, IString>;
TYPED_TEST_SUITE(StringOf, BothStrings, );

TYPED_TEST(StringOf, SearchesChangesAndComparesAlikeInEitherWidth) {
  using Text = std::basic_string<typename TypeParam::View::value_type>;
  const auto s = [](std::string_view ascii) {
    return TypeParam(Text(ascii.begin(), ascii.end()).c_str());
  };
  const TypeParam path = s("a\\bc\\bcd");
  EXPECT_EQ(5U, path.find(s("bc"), 3));
  EXPECT_FALSE(path.contains(s("ab")));
  EXPECT_FALSE(path.startsWith(s("a\\bc\\bcde")));
  EXPECT_FALSE(path.endsWith(s("bc")));
  EXPECT_EQ(TypeParam(), path.substring(9, 1));
  EXPECT_EQ(s("a b"), s(" \t\n\v\f\r a b \n").trimmed());
  EXPECT_EQ(TypeParam(), s(" \t ").trimmed());
  EXPECT_EQ(s("xaxa"), s("aaaaa").replaced(s("aa"), s("x")).replaced(s("xx"), s("xax")));
  EXPECT_EQ(path, path.replaced(TypeParam(static_cast<decltype(path.c_str())>(nullptr)), s("x")));
  EXPECT_EQ(0, path[path.length() + 1]);
  TypeParam twice = s("a") + 'b';
  twice += twice;
  EXPECT_EQ(s("abab!"), twice + s("!"));
  EXPECT_GT(s("a_").compareIgnoringCase(s("A")), 0);
  EXPECT_EQ(0, s("az[@").compareIgnoringCase(s("AZ[@")));
  EXPECT_LT(s("[").compareIgnoringCase(s("A")), 0);
  EXPECT_LT(s("ab").compareIgnoringCase(s("ABC")), 0);
  EXPECT_EQ(s("AZ[`{@09"), s("az[`{@09").toUpper());
}

TEST(CString, IsUnsignedBytesMayHoldZerosAndIsFormatted) {
  EXPECT_LT(CString("z"), CString("\xC3\xA9"));
  const CString zeros(std::string_view("a\0b", 3));
  EXPECT_EQ(3U, zeros.length());
  EXPECT_EQ(CString("7: 2.50 x% 9"), CString::format("%d: %.2f %s%% %d", 7, 2.5, "x", 9));
  EXPECT_EQ(zeros, zeros.asWide().asMultibyte());
}

TEST(StringConversion, InvalidTextBecomesTheReplacementCharacter) {
  const std::pair<const char*, const wchar_t*> cases[] = {
      {"\x01\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"
       "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF",  // the first and last of each length, all valid
       L"\x01\x7F\x80\x7FF\x800\xD7FF\xE000\xFFFF\U00010000\U0010FFFF"},
      {"a\x80z", L"a\uFFFDz"},                            // a trailing byte alone
      {"\xC0\xAF", L"\uFFFD\uFFFD"},                      // overlong forms
      {"\xE0\x9F\xBF", L"\uFFFD\uFFFD\uFFFD"},            //
      {"\xED\xA0\x80", L"\uFFFD\uFFFD\uFFFD"},            // a surrogate
      {"\xF4\x90\x80\x80", L"\uFFFD\uFFFD\uFFFD\uFFFD"},  // beyond U+10FFFF
      {"\xE2\x82", L"\uFFFD"},                            // cut at the end
      {"\xF0\x9F\x98z", L"\uFFFDz"},                      // cut by another character
      {"\xE2\x82\xE2\x82\xAC", L"\uFFFD\u20AC"},
  };
  for (const auto& [bytes, wide] : cases) EXPECT_EQ(IString(wide), CString(bytes).asWide());
  EXPECT_EQ(CString(cases[0].first), IString(cases[0].second).asMultibyte());
  const wchar_t lone[] = {L'a', wchar_t(0xDC00), wchar_t(0xD800), L'z', wchar_t(0xD800), 0};
  EXPECT_EQ(CString("a\xEF\xBF\xBD\xEF\xBF\xBDz\xEF\xBF\xBD"), IString(lone).asMultibyte());
}
