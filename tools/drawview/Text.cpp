#include "tools/drawview/Text.h"

#include <cstdint>

#include <vx/String.h>

namespace drawview {

std::string validText(std::string_view text) {
  return std::string(vxString::CString(text).asWide().asMultibyte().view());
}

namespace {

void appendJson(std::string& out, char c) {
  constexpr char kDigits[] = "0123456789abcdef";
  const auto byte = static_cast<unsigned char>(c);
  if (c == '"' || c == '\\') {
    out += '\\';
    out += c;
  } else if (byte < 0x20 || byte == 0x7F || c == '<' || c == '>' || c == '&') {
    out += "\\u00";
    out += kDigits[byte / 16];
    out += kDigits[byte % 16];
  } else {
    out += c;
  }
}

void appendHtml(std::string& out, char c) {
  switch (c) {
    case '&':
      out += "&amp;";
      break;
    case '<':
      out += "&lt;";
      break;
    case '>':
      out += "&gt;";
      break;
    case '"':
      out += "&quot;";
      break;
    case '\'':
      out += "&#39;";
      break;
    case '\0':
      out += "\xEF\xBF\xBD";
      break;
    default:
      out += c;
  }
}

}  // namespace

std::string jsonString(std::string_view text) {
  std::string out = "\"";
  for (const char c : validText(text)) appendJson(out, c);
  return out + '"';
}

std::string htmlText(std::string_view text) {
  std::string out;
  for (const char c : validText(text)) appendHtml(out, c);
  return out;
}

void appendBase64(std::string& out, std::string_view bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 3; ++k)
      group = group << 8 | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0u);
    for (std::size_t k = 0; k < 4; ++k)
      out += k <= count ? kDigits[group >> (18 - 6 * k) & 63] : '=';
  }
}

}  // namespace drawview
