#include <algorithm>
#include <set>

#include <kilnbase/services/capitalization.h>
#include <vx/Error.h>

namespace vxKilnBase {

namespace {

using vxString::BasicString;
using vxString::CString;
using vxString::IString;

bool isUpper(auto c) {
  return c >= 'A' && c <= 'Z';
}

bool isAlphanumeric(auto c) {
  return isUpper(c) || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

CString narrow(const CString& word) {
  return word;
}

CString narrow(const IString& word) {
  return word.asMultibyte();
}

bool isMinor(const auto& word) {
  static const std::set<CString> minorWords = {"a",    "an", "and", "at", "but",  "for", "has",
                                               "into", "in", "is",  "it", "not",  "of",  "on",
                                               "or",   "so", "the", "to", "with", "yet"};
  return minorWords.contains(narrow(word).toLower());
}

template <class Char>
bool hasAlphanumeric(const BasicString<Char>& word) {
  return std::ranges::any_of(word.view(), isAlphanumeric<Char>);
}

template <class Char>
BasicString<Char> capitalized(const BasicString<Char>& word) {
  return word.substring(0, 1).toUpper() + word.substring(1).toLower();
}

template <class Char>
BasicString<Char> bookTitle(const BasicString<Char>& text) {
  auto words = vxUtil::split(text, vxUtil::isSpace<Char>);
  const auto first = std::ranges::find_if(words, hasAlphanumeric<Char>);
  const auto behindLast = std::find_if(words.rbegin(), words.rend(), hasAlphanumeric<Char>).base();
  for (auto word = words.begin(); word != words.end(); ++word) {
    const bool isOuter = word == first || word + 1 == behindLast;
    *word = isMinor(*word) && !isOuter ? word->toLower() : capitalized(*word);
  }
  return vxUtil::join(words);
}

template <class Char>
BasicString<Char> sentence(const BasicString<Char>& text) {
  auto words = vxUtil::split(text, vxUtil::isSpace<Char>);
  const auto first = std::ranges::find_if(words, hasAlphanumeric<Char>);
  for (auto word = words.begin(); word != words.end(); ++word) {
    const bool isName = isUpper((*word)[0]) && !isMinor(*word);
    *word = word == first || isName ? capitalized(*word) : word->toLower();
  }
  return vxUtil::join(words);
}

}  // namespace

CString toBookTitleCapitalization(const CString& text) {
  return bookTitle(text);
}

IString toBookTitleCapitalization(const IString& text) {
  return bookTitle(text);
}

CString toSentenceCapitalization(const CString& text) {
  return sentence(text);
}

IString toSentenceCapitalization(const IString& text) {
  return sentence(text);
}

}  // namespace vxKilnBase
