// Results of services that can fail, waiting times, and text taken apart and put together.
#pragma once

#include <utility>

#include <vx/Containers.h>
#include <vx/String.h>
#include <vx/export.h>

namespace vxUtil {

/// The result of a service that can fail: a code, 0 for success, and a message for the user.
///
///     const vxUtil::Error error(1, "directory not writeable: /srv\n");
///     if (error) puts(error.message().c_str());
class Error {
 public:
  /// Success.
  Error() = default;
  /// A failure unless `code` is 0.
  Error(int code, vxString::CString message) : code_(code), message_(std::move(message)) {}

  /// As given to the constructor.
  int code() const { return code_; }
  const vxString::CString& message() const { return message_; }
  /// Whether this is a failure.
  explicit operator bool() const { return code_ != 0; }

 private:
  int code_ = 0;
  vxString::CString message_;
};

/// How long to wait, in seconds. The default and 0.0 stand for no limit, negative numbers and NaN
/// for the same.
class Interval {
 public:
  Interval() = default;
  /// So many seconds; no limit when `seconds` is not above 0.
  explicit Interval(double seconds) : seconds_(seconds > 0.0 ? seconds : 0.0) {}

  /// Whether there is no limit.
  bool isUnlimited() const { return seconds_ == 0.0; }
  /// 0.0 when there is no limit.
  double seconds() const { return seconds_; }

 private:
  double seconds_ = 0.0;
};

/// Whether `c` is white space of ASCII: blank, tab, line feed, vertical tab, form feed, carriage
/// return.
template <class Char>
constexpr bool isSpace(Char c) {
  return c == Char(' ') || (c >= Char('\t') && c <= Char('\r'));
}

/// The words between the separators. Every separator ends a word, so that empty words stay:
/// a text with n separators has n + 1 words.
template <class Char>
VX_API vx::vector<vxString::BasicString<Char>> split(const vxString::BasicString<Char>& text,
                                                     bool (*isSeparator)(Char));

/// The words with one blank between neighbours. Together with `split` at blanks this gives the
/// text back.
template <class Char>
VX_API vxString::BasicString<Char> join(const vx::vector<vxString::BasicString<Char>>& words);

}  // namespace vxUtil
