// The page that shows a session.
#pragma once

#include <string>
#include <string_view>

namespace session {

struct SessionContent {
  std::string title;
  std::string summary;  ///< A line under the title.
  std::string view;     ///< The page of the viewer; empty: there is none.
  std::string maps;     ///< The page of surface_fit.
  std::string trace;    ///< Lines.
};

/// One page of HTML with both pages inside, that needs nothing else. On a wide screen they stand
/// side by side, on others one is chosen.
std::string sessionPage(const SessionContent& content);

/// The text of page.html. "{{NAME}}" stands for each of the above, in capitals.
extern const std::string_view kSessionTemplate;

}  // namespace session
