// Strings: CString holds narrow text in UTF-8, IString wide text (UTF-16 on Windows, UTF-32
// elsewhere).
#pragma once

#include <compare>
#include <concepts>
#include <cstdarg>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include <vx/export.h>

namespace vxString {

template <class Char>
class BasicString;

namespace detail {

VX_PRINTF(1, 0) VX_API BasicString<char> formatted(const char* format, std::va_list arguments);
VX_API BasicString<wchar_t> widened(const BasicString<char>& text);
VX_API BasicString<char> narrowed(const BasicString<wchar_t>& text);

}  // namespace detail

/// A string value: copies are independent, positions and lengths count code units (bytes of UTF-8).
///
///     vxString::CString name = vxString::CString::format("%s-%03d", "curve", 7);
///     if (name.startsWith("curve")) name = name.substring(6);  // "007"
///     vxString::IString wide = name.asWide();
///
/// Operations on case and blanks know only the letters and blanks of ASCII, in every locale. An
/// operation fails only when there is no memory (`std::bad_alloc`). A position beyond the end
/// counts as the end.
template <class Char>
class VX_API BasicString {
 public:
  /// A view of text in the same encoding.
  using View = std::basic_string_view<Char>;

  /// The result of a search that finds nothing.
  static constexpr std::size_t npos = View::npos;

  BasicString() = default;
  /// The text up to its terminating zero. Null stands for the empty string.
  BasicString(const Char* text);  // NOLINT(google-explicit-constructor): a literal is a string
  /// The text of the view, which may hold zeros.
  explicit BasicString(View text);

  /// In code units, without the terminating zero.
  std::size_t length() const;
  /// Whether the length is 0.
  bool isEmpty() const { return length() == 0; }
  /// The text with a terminating zero, until the string changes.
  const Char* c_str() const;
  /// The text, until the string changes.
  View view() const { return {c_str(), length()}; }
  /// The code unit at `i`; zero at the end and beyond.
  Char operator[](std::size_t i) const;

  /// Below 0, 0 or above 0: the order of the code units, which are unsigned numbers in a CString.
  int compare(const BasicString& other) const;
  /// As `compare`, with the upper-case letters of ASCII taken as lower case.
  int compareIgnoringCase(const BasicString& other) const;
  /// The order of `compare`.
  friend bool operator==(const BasicString& a, const BasicString& b) { return a.compare(b) == 0; }
  friend std::strong_ordering operator<=>(const BasicString& a, const BasicString& b) {
    return a.compare(b) <=> 0;
  }

  /// Appends; `other` may be this string.
  BasicString& operator+=(const BasicString& other);
  BasicString& operator+=(Char c);
  friend BasicString operator+(BasicString a, const BasicString& b) { return std::move(a += b); }
  friend BasicString operator+(BasicString a, Char c) { return std::move(a += c); }

  /// The position of the first occurrence of `text` at or after `from`. The empty text occurs at
  /// every position.
  std::size_t find(const BasicString& text, std::size_t from = 0) const;
  /// The position of the last occurrence.
  std::size_t findLast(const BasicString& text) const;
  /// Whether the text occurs: anywhere, at the start, at the end.
  bool contains(const BasicString& text) const { return find(text) != npos; }
  bool startsWith(const BasicString& text) const;
  bool endsWith(const BasicString& text) const;

  /// At most `count` code units from `start` on.
  BasicString substring(std::size_t start, std::size_t count = npos) const;
  /// Without the blanks, tabs and line ends at both ends.
  BasicString trimmed() const;
  /// With every occurrence of `text` replaced, searched from the front. For an empty `text` nothing
  /// is replaced.
  BasicString replaced(const BasicString& text, const BasicString& replacement) const;
  /// With the letters of ASCII in the other case.
  BasicString toLower() const;
  BasicString toUpper() const;

  // Members that one of the encodings alone has are templates, so that each program compiles its
  // own: compilers do not agree on the names that constraints give to exported members.

  /// The text that printf would write; empty when printf refuses the format or the arguments.
  template <std::same_as<char> C = Char>
  VX_PRINTF(1, 2)
  static BasicString format(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    BasicString text = formatV(format, arguments);
    va_end(arguments);
    return text;
  }
  template <std::same_as<char> C = Char>
  VX_PRINTF(1, 0)
  static BasicString formatV(const char* format, std::va_list arguments) {
    return detail::formatted(format, arguments);
  }

  /// The same text in the other encoding. U+FFFD replaces each invalid part: a lone surrogate, a
  /// number beyond U+10FFFF, and in UTF-8 each longest beginning of a valid sequence, or else one
  /// byte.
  template <std::same_as<char> C = Char>
  BasicString<wchar_t> asWide() const {
    return detail::widened(*this);
  }
  template <std::same_as<wchar_t> C = Char>
  BasicString<char> asMultibyte() const {
    return detail::narrowed(*this);
  }

 private:
  std::basic_string<Char> text_;
};

/// Narrow text in UTF-8.
using CString = BasicString<char>;
/// Wide text: UTF-16 on Windows, UTF-32 elsewhere.
using IString = BasicString<wchar_t>;

}  // namespace vxString
