#include <algorithm>
#include <cstdio>

#include <vx/String.h>

namespace vxString {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

template <class Char>
Char lower(Char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<Char>(c - 'A' + 'a') : c;
}

template <class Char>
Char upper(Char c) {
  return c >= 'a' && c <= 'z' ? static_cast<Char>(c - 'a' + 'A') : c;
}

template <class Char>
bool isBlank(Char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isSurrogate(char32_t c) {
  return c >= 0xD800 && c <= 0xDFFF;
}

// The range of the second byte of a UTF-8 sequence. It rules out overlong forms, surrogates and
// numbers beyond U+10FFFF (the Unicode Standard, table 3-7).
struct SecondByte {
  unsigned char first;
  unsigned char last;
};

SecondByte secondByteAfter(unsigned char lead) {
  switch (lead) {
    case 0xE0:
      return {0xA0, 0xBF};
    case 0xED:
      return {0x80, 0x9F};
    case 0xF0:
      return {0x90, 0xBF};
    case 0xF4:
      return {0x80, 0x8F};
    default:
      return {0x80, 0xBF};
  }
}

// The number of bytes that follow the first byte of a UTF-8 sequence; -1 for a byte that cannot be
// the first.
int trailingBytes(unsigned char lead) {
  if (lead < 0x80) return 0;
  if (lead < 0xC2 || lead > 0xF4) return -1;
  return lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
}

// The three functions that follow remove the first code point of a text that is not empty, and
// return it.
char32_t takeCodePoint(std::string_view& text) {
  const auto lead = static_cast<unsigned char>(text.front());
  text.remove_prefix(1);
  const int trailing = trailingBytes(lead);
  if (trailing < 0) return kReplacement;
  char32_t c = trailing == 0 ? lead : lead & (0x3FU >> trailing);
  SecondByte range = secondByteAfter(lead);
  for (int i = 0; i < trailing; ++i, range = {0x80, 0xBF}) {
    const auto byte = static_cast<unsigned char>(text.empty() ? '\0' : text.front());
    if (byte < range.first || byte > range.last) return kReplacement;
    text.remove_prefix(1);
    c = c << 6U | (byte & 0x3FU);
  }
  return c;
}

char32_t takeUtf16(std::wstring_view& text) {
  const auto first = static_cast<char32_t>(text.front());
  text.remove_prefix(1);
  if (!isSurrogate(first)) return first;
  const char32_t second = text.empty() ? 0 : static_cast<char32_t>(text.front());
  if (first > 0xDBFF || second < 0xDC00 || second > 0xDFFF) return kReplacement;
  text.remove_prefix(1);
  return 0x10000 + ((first - 0xD800) << 10U) + (second - 0xDC00);
}

char32_t takeCodePoint(std::wstring_view& text) {
  if constexpr (sizeof(wchar_t) == 2) return takeUtf16(text);
  const auto c = static_cast<char32_t>(text.front());
  text.remove_prefix(1);
  return c > 0x10FFFF || isSurrogate(c) ? kReplacement : c;
}

void append(std::string& text, char32_t c) {
  const auto byte = [&text](char32_t value) { text += static_cast<char>(value); };
  if (c < 0x80) {
    byte(c);
    return;
  }
  const unsigned trailing = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
  byte((0xFF00U >> (trailing + 1) & 0xFFU) | c >> (6 * trailing));
  for (unsigned i = trailing; i-- > 0;) byte(0x80U | (c >> (6 * i) & 0x3FU));
}

void append(std::wstring& text, char32_t c) {
  if (sizeof(wchar_t) == 4 || c < 0x10000) {
    text += static_cast<wchar_t>(c);
  } else {
    text += static_cast<wchar_t>(0xD7C0 + (c >> 10U));
    text += static_cast<wchar_t>(0xDC00 + (c & 0x3FFU));
  }
}

template <class To, class From>
BasicString<To> converted(std::basic_string_view<From> text) {
  std::basic_string<To> result;
  result.reserve(text.size());
  while (!text.empty()) append(result, takeCodePoint(text));
  return BasicString<To>(std::basic_string_view<To>(result));
}

}  // namespace

template <class Char>
BasicString<Char>::BasicString(const Char* text) {
  if (text != nullptr) text_ = text;
}

template <class Char>
BasicString<Char>::BasicString(View text) : text_(text) {}

template <class Char>
std::size_t BasicString<Char>::length() const {
  return text_.length();
}

template <class Char>
const Char* BasicString<Char>::c_str() const {
  return text_.c_str();
}

template <class Char>
Char BasicString<Char>::operator[](std::size_t i) const {
  return i < text_.length() ? text_[i] : Char(0);
}

template <class Char>
int BasicString<Char>::compare(const BasicString& other) const {
  return text_.compare(other.text_);
}

template <class Char>
int BasicString<Char>::compareIgnoringCase(const BasicString& other) const {
  const auto isSame = [](Char a, Char b) { return lower(a) == lower(b); };
  const View a = view();
  const View b = other.view();
  const auto [inA, inB] = std::mismatch(a.begin(), a.end(), b.begin(), b.end(), isSame);
  if (inA == a.end() || inB == b.end()) return (inA != a.end()) - (inB != b.end());
  return View::traits_type::lt(lower(*inA), lower(*inB)) ? -1 : 1;
}

template <class Char>
BasicString<Char>& BasicString<Char>::operator+=(const BasicString& other) {
  text_ += other.text_;
  return *this;
}

template <class Char>
BasicString<Char>& BasicString<Char>::operator+=(Char c) {
  text_ += c;
  return *this;
}

template <class Char>
std::size_t BasicString<Char>::find(const BasicString& text, std::size_t from) const {
  return text_.find(text.text_, std::min(from, length()));
}

template <class Char>
std::size_t BasicString<Char>::findLast(const BasicString& text) const {
  return text_.rfind(text.text_);
}

template <class Char>
bool BasicString<Char>::startsWith(const BasicString& text) const {
  return text_.starts_with(text.text_);
}

template <class Char>
bool BasicString<Char>::endsWith(const BasicString& text) const {
  return text_.ends_with(text.text_);
}

template <class Char>
BasicString<Char> BasicString<Char>::substring(std::size_t start, std::size_t count) const {
  return BasicString(view().substr(std::min(start, length()), count));
}

template <class Char>
BasicString<Char> BasicString<Char>::trimmed() const {
  const auto first = std::find_if_not(text_.begin(), text_.end(), isBlank<Char>);
  const auto last = std::find_if_not(text_.rbegin(), text_.rend(), isBlank<Char>).base();
  return first < last ? BasicString(View(first, last)) : BasicString();
}

template <class Char>
BasicString<Char> BasicString<Char>::replaced(const BasicString& text,
                                              const BasicString& replacement) const {
  BasicString result;
  std::size_t done = 0;
  std::size_t found = text.isEmpty() ? npos : find(text);
  for (; found != npos; found = find(text, done)) {
    result.text_.append(text_, done, found - done).append(replacement.text_);
    done = found + text.length();
  }
  result.text_.append(text_, done);
  return result;
}

template <class Char>
BasicString<Char> BasicString<Char>::toLower() const {
  BasicString result = *this;
  std::transform(text_.begin(), text_.end(), result.text_.begin(), lower<Char>);
  return result;
}

template <class Char>
BasicString<Char> BasicString<Char>::toUpper() const {
  BasicString result = *this;
  std::transform(text_.begin(), text_.end(), result.text_.begin(), upper<Char>);
  return result;
}

BasicString<char> detail::formatted(const char* format, std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  std::string text;
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  if (length > 0) {
    text.resize(static_cast<std::size_t>(length));
    std::vsnprintf(text.data(), text.size() + 1, format, again);
  }
  va_end(again);
  return BasicString<char>(BasicString<char>::View(text));
}

BasicString<wchar_t> detail::widened(const BasicString<char>& text) {
  return converted<wchar_t>(text.view());
}

BasicString<char> detail::narrowed(const BasicString<wchar_t>& text) {
  return converted<char>(text.view());
}

template class BasicString<char>;
template class BasicString<wchar_t>;

}  // namespace vxString
