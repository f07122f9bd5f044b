#include "examples/session/Summary.h"

#include <algorithm>
#include <cstdio>

#include <vx/String.h>

namespace session {

namespace {

constexpr const char* kBold = "\x1b[1m";
constexpr const char* kNormal = "\x1b[0m";

const char* colourOf(Tone tone) {
  switch (tone) {
    case Tone::kGood:
      return "\x1b[32m";
    case Tone::kTrouble:
      return "\x1b[33m";
    case Tone::kPlain:
      break;
  }
  return "";
}

}  // namespace

void Summary::add(const std::string& name, const std::string& text, Tone tone) {
  lines_.push_back({name, text, tone});
}

std::string Summary::text(bool colours) const {
  std::size_t width = 0;
  for (const Line& line : lines_) width = std::max(width, line.name.size());
  std::string result;
  for (const auto& [name, text, tone] : lines_) {
    const bool isColoured = colours && tone != Tone::kPlain;
    result.append(colours ? kBold : "").append(name).append(colours ? kNormal : "");
    result.append(width + 2 - name.size(), ' ').append(isColoured ? colourOf(tone) : "");
    result.append(text).append(isColoured ? kNormal : "").append("\n");
  }
  return result;
}

std::string counted(std::size_t number, const std::string& noun) {
  std::string digits = std::to_string(number);
  for (std::size_t i = digits.size(); i > 3; i -= 3) digits.insert(i - 3, 1, ',');
  return digits.append(" ").append(noun).append(number == 1 ? "" : "s");
}

std::string secondsText(double seconds) {
  return vxString::CString::format("%.3g s", seconds).c_str();
}

std::string lengthText(double length, const std::string& unit) {
  return vxString::CString::format("%.5g %s", length, unit.c_str()).c_str();
}

}  // namespace session
