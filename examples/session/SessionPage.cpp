#include "examples/session/SessionPage.h"

#include <array>
#include <utility>

namespace session {

namespace {

// The text for an element and for an attribute in double quotes.
std::string escaped(std::string_view text) {
  std::string result;
  result.reserve(text.size() + text.size() / 8);
  for (const char c : text) {
    if (c == '&')
      result += "&amp;";
    else if (c == '<')
      result += "&lt;";
    else if (c == '"')
      result += "&quot;";
    else
      result += c;
  }
  return result;
}

constexpr const char* kNoView =
    "<!DOCTYPE html><meta name=color-scheme content=\"light dark\"><body style=\"font:15px "
    "system-ui;padding:1em\">drawview was not there, or was built without its page, so that "
    "nothing is shown in three dimensions.";

}  // namespace

std::string sessionPage(const SessionContent& content) {
  const std::array<std::pair<std::string_view, std::string>, 5> parts = {
      {{"{{TITLE}}", escaped(content.title)},
       {"{{SUMMARY}}", escaped(content.summary)},
       {"{{VIEW}}", escaped(content.view.empty() ? kNoView : content.view)},
       {"{{MAPS}}", escaped(content.maps)},
       {"{{TRACE}}", escaped(content.trace)}}};
  std::string page;
  std::size_t done = 0;
  for (std::size_t at = 0; (at = kSessionTemplate.find("{{", done)) != std::string_view::npos;) {
    page += kSessionTemplate.substr(done, at - done);
    const std::size_t end = kSessionTemplate.find("}}", at) + 2;
    for (const auto& [name, text] : parts)
      if (name == kSessionTemplate.substr(at, end - at)) page += text;
    done = end;
  }
  return page += kSessionTemplate.substr(done);
}

}  // namespace session
