#include "tools/morlaWarning/WarningArguments.h"

#include <algorithm>
#include <iostream>

#include <kilnbase/version.h>
#include <vx/String.h>

namespace morlawarning {

namespace {

constexpr const char* kHelp =
    R"(Shows a warning and waits until the user chooses a button.

Usage: morlaWarning [-t TITLE] [-s LINE]... [-f TEXT] -b LABEL [-b LABEL]...

  -t TITLE    the title of the window
  -s LINE     one more line of the message
  -f TEXT     a further text, below the message
  -b LABEL    one more button, of at most 255
  --help      shows this help
  --version   shows the version

The argument after -t, -s, -f or -b is its value, also when that begins with a dash. There is a line
or a further text, and a button. Of several titles or further texts the last one holds.

The warning is a window, or a question on the terminal where there is no display. Return takes the
first button, Escape closes the warning.

Exit code: the number of the chosen button, from 1; 0 when no button was chosen, when the warning
cannot be shown, and after --help and --version.

Examples:
  $ morlaWarning -t Close -s "The model has changed." -b Save -b Discard
  $ morlaWarning -s "Two surfaces overlap." -f "Trim one of them." -b OK
)";

std::string versionLine() {
  return std::string("morlaWarning ") + kilnbaseVersion() + "\n";
}

constexpr wchar_t kReplacement = 0xFFFD;

bool isControl(wchar_t c) {
  return c < L' ' || (c >= 0x7F && c < 0xA0);
}

std::string cleanText(const std::string& text) {
  const vxString::CString lines =
      vxString::CString(std::string_view(text)).replaced("\r\n", "\n").replaced("\r", "\n");
  std::wstring wide(lines.asWide().view());
  std::replace_if(
      wide.begin(), wide.end(), [](wchar_t c) { return isControl(c) && c != L'\n' && c != L'\t'; },
      kReplacement);
  return std::string(vxString::IString(wide).asMultibyte().view());
}

std::string cleanLine(const std::string& text) {
  std::string line = cleanText(text);
  std::replace_if(
      line.begin(), line.end(), [](char c) { return c == '\n' || c == '\t'; }, ' ');
  return line;
}

void requireShowable(const Warning& warning) {
  if (warning.message.empty() && warning.extra.empty())
    throw ArgumentError("no text: give -s or -f");
  if (warning.buttons.empty()) throw ArgumentError("no button: give -b");
  if (warning.buttons.size() > kMostButtons) throw ArgumentError("more than 255 buttons");
}

}  // namespace

std::optional<Warning> parseArguments(const std::vector<std::string>& arguments) {
  Warning warning;
  for (std::size_t i = 0; i < arguments.size(); i += 2) {
    const std::string& option = arguments[i];
    if (option == "--help" || option == "--version") {
      std::cout << (option == "--help" ? kHelp : versionLine());
      return std::nullopt;
    }
    const bool isKnown = option == "-t" || option == "-s" || option == "-f" || option == "-b";
    if (!isKnown) throw ArgumentError("no option '" + cleanLine(option) + "'; try --help");
    if (i + 1 == arguments.size()) throw ArgumentError("no value after " + option);
    const std::string& value = arguments[i + 1];
    if (option == "-t") warning.title = cleanLine(value);
    if (option == "-s") warning.message += cleanText(value) + '\n';
    if (option == "-f") warning.extra = cleanText(value);
    if (option == "-b") warning.buttons.push_back(cleanLine(value));
  }
  requireShowable(warning);
  return warning;
}

}  // namespace morlawarning
