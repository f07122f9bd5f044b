#include "tools/morlaWarning/Prompt.h"

#include <charconv>

#include <vx/String.h>

#include "tools/morlaWarning/Dialog.h"

namespace morlawarning {

namespace {

std::string paragraph(const std::string& text) {
  if (text.empty()) return "";
  return text + (text.ends_with('\n') ? "\n" : "\n\n");
}

}  // namespace

std::string questionText(const Warning& warning) {
  std::string text = "\n";
  if (!warning.title.empty()) text += "== " + warning.title + " ==\n\n";
  text += paragraph(warning.message) + paragraph(warning.extra);
  for (std::size_t i = 0; i < warning.buttons.size(); ++i)
    text += "  " + std::to_string(i + 1) + "  " + warning.buttons[i] + "\n";
  return text;
}

std::string promptText(const Warning& warning) {
  const std::size_t count = warning.buttons.size();
  const std::string numbers = count == 1 ? "1" : "1 to " + std::to_string(count);
  return "Choose " + numbers + " (Return: 1, q: none): ";
}

std::optional<int> buttonFor(std::string_view line, std::size_t buttons) {
  const vxString::CString answer = vxString::CString(line).trimmed();
  if (answer.isEmpty()) return 1;
  if (answer == "q" || answer == "Q" || answer == "\x1b") return kNoButton;
  const std::string_view digits = answer.view();
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(digits.begin(), digits.end(), number);
  if (error != std::errc() || end != digits.end() || number < 1 || number > buttons)
    return std::nullopt;
  return static_cast<int>(number);
}

}  // namespace morlawarning
