// Texts of unknown origin as parts of JSON and HTML.
#pragma once

#include <string>
#include <string_view>

namespace drawview {

/// The text as valid UTF-8; U+FFFD replaces what is not.
std::string validText(std::string_view text);

/// A JSON string with its quotes. Bytes that are not UTF-8 become U+FFFD. The result holds no `<`,
/// so that an HTML script may hold it.
std::string jsonString(std::string_view text);

/// The text for the content of an HTML element and for an attribute in double quotes. Bytes that
/// are not UTF-8, and zero bytes, become U+FFFD.
std::string htmlText(std::string_view text);

/// Appends the bytes in base64 to `out`. Only the last piece of a whole may have a length that is
/// no multiple of 3.
void appendBase64(std::string& out, std::string_view bytes);

}  // namespace drawview
