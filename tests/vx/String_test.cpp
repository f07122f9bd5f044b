#include <gtest/gtest.h>
#include <string>
#include <utility>

#include <vx/String.h>

using vxString::CString;
using vxString::IString;

namespace {

// The same text in either width.
template <class String>
String make(const char* ascii) {
  String text;
  for (; *ascii != '\0'; ++ascii) text += static_cast<typename String::View::value_type>(*ascii);
  return text;
}

template <class String>
class StringOf : public testing::Test {};
using BothStrings = testing::Types<CString, IString>;
TYPED_TEST_SUITE(StringOf, BothStrings, );

}  // namespace

TYPED_TEST(StringOf, SearchesAndPartsAcceptAnyPosition) {
  const auto s = make<TypeParam>;
  const TypeParam path = s("a\\bc\\bcd");
  EXPECT_EQ(2U, path.find(s("bc")));
  EXPECT_EQ(5U, path.find(s("bc"), 3));
  EXPECT_EQ(5U, path.findLast(s("bc")));
  EXPECT_EQ(TypeParam::npos, path.find(s("a"), 100));
  EXPECT_EQ(8U, path.find(TypeParam(), 100));
  EXPECT_TRUE(path.contains(TypeParam()) && path.contains(path) && !path.contains(s("ab")));
  EXPECT_TRUE(path.startsWith(s("a\\")) && path.endsWith(s("cd")));
  EXPECT_FALSE(path.startsWith(s("a\\bc\\bcde")) || path.endsWith(s("bc")));
  EXPECT_EQ(s("bcd"), path.substring(5));
  EXPECT_EQ(TypeParam(), path.substring(9, 1));
  EXPECT_EQ(0, path[1000]);
}

TYPED_TEST(StringOf, ChangedCopies) {
  const auto s = make<TypeParam>;
  EXPECT_EQ(s("a b"), s(" \t\n\v\f\r a b \n").trimmed());
  EXPECT_EQ(TypeParam(), s(" \t ").trimmed());
  EXPECT_EQ(s("xaxa"), s("aaaaa").replaced(s("aa"), s("x")).replaced(s("xx"), s("xax")));
  EXPECT_EQ(s("b"), s("aba").replaced(s("a"), TypeParam()));
  EXPECT_EQ(s("aba"), s("aba").replaced(TypeParam(), s("x")));
  TypeParam twice = s("a") + 'b';
  twice += twice;
  EXPECT_EQ(s("abab!"), twice + s("!"));
}

TYPED_TEST(StringOf, OrderAndCase) {
  const auto s = make<TypeParam>;
  EXPECT_LT(s("B"), s("a"));
  EXPECT_LT(s("ab"), s("abc"));
  EXPECT_GT(s("a_").compareIgnoringCase(s("A")), 0);
  EXPECT_EQ(0, s("az[@").compareIgnoringCase(s("AZ[@")));
  EXPECT_LT(s("[").compareIgnoringCase(s("A")), 0);
  EXPECT_LT(s("ab").compareIgnoringCase(s("ABC")), 0);
  EXPECT_EQ(s("AZ[`{@09"), s("az[`{@09").toUpper());
}

TEST(CString, IsUnsignedBytesAndMayHoldZeros) {
  EXPECT_LT(CString("z"), CString("\xC3\xA9"));
  EXPECT_EQ(CString("\xC3\xA9"), CString("\xC3\xA9").toUpper());
  EXPECT_TRUE(CString(nullptr).isEmpty());
  const CString zeros(std::string_view("a\0b", 3));
  EXPECT_EQ(3U, zeros.length());
  EXPECT_NE(zeros, CString("a"));
  EXPECT_EQ(zeros, zeros.asWide().asMultibyte());
}

TEST(CString, FormatsTextsOfAnyLength) {
  EXPECT_EQ(CString("7: 2.50 x% 9"),
            CString::format("%d: %.2f %s%% %zu", 7, 2.5, "x", sizeof(char[9])));
  const std::string text(5000, 'x');
  EXPECT_EQ(CString(text.c_str()), CString::format("%s", text.c_str()));
}

TEST(StringConversion, EveryCodePointSurvivesTheRoundTrip) {
  for (char32_t c = 1; c <= 0x10FFFF; c = c == 0xD7FF ? 0xE000 : c + 1) {
    std::wstring wide;
    if (sizeof(wchar_t) == 2 && c > 0xFFFF) {
      wide += static_cast<wchar_t>(0xD800 + ((c - 0x10000) >> 10U));
      wide += static_cast<wchar_t>(0xDC00 + ((c - 0x10000) & 0x3FFU));
    } else {
      wide += static_cast<wchar_t>(c);
    }
    const CString narrow = IString(wide.c_str()).asMultibyte();
    ASSERT_EQ(c < 0x80 ? 1U : c < 0x800 ? 2U : c < 0x10000 ? 3U : 4U, narrow.length());
    ASSERT_EQ(IString(wide.c_str()), narrow.asWide()) << std::hex << static_cast<unsigned>(c);
  }
}

TEST(StringConversion, InvalidTextBecomesTheReplacementCharacter) {
  const std::pair<const char*, const wchar_t*> cases[] = {
      {"a\x80z", L"a\uFFFDz"},                            // a trailing byte alone
      {"\xC0\xAF", L"\uFFFD\uFFFD"},                      // overlong forms
      {"\xE0\x9F\xBF", L"\uFFFD\uFFFD\uFFFD"},            //
      {"\xED\xA0\x80", L"\uFFFD\uFFFD\uFFFD"},            // a surrogate
      {"\xF4\x90\x80\x80", L"\uFFFD\uFFFD\uFFFD\uFFFD"},  // beyond U+10FFFF
      {"\xF5\xFF", L"\uFFFD\uFFFD"},
      {"\xE2\x82", L"\uFFFD"},        // cut at the end
      {"\xF0\x9F\x98z", L"\uFFFDz"},  // cut by another character
      {"\xE2\x82\xE2\x82\xAC", L"\uFFFD\u20AC"},
  };
  for (const auto& [bytes, wide] : cases) EXPECT_EQ(IString(wide), CString(bytes).asWide());
  const wchar_t lone[] = {L'a', wchar_t(0xDC00), wchar_t(0xD800), L'z', wchar_t(0xD800), 0};
  EXPECT_EQ(CString("a\xEF\xBF\xBD\xEF\xBF\xBDz\xEF\xBF\xBD"), IString(lone).asMultibyte());
}
