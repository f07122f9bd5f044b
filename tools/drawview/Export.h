// A recording as one page that works from disk.
#pragma once

#include <filesystem>
#include <istream>
#include <string_view>
#include <vector>

#include "tools/drawview/Recording.h"

namespace drawview {

/// Where the page takes the frames; the page has this text once.
inline constexpr std::string_view kFramesPlace = "<!--KILN-FRAMES-->";

struct ExportTarget {
  std::filesystem::path path;
  bool force = false;  ///< Overwrites a file that is there.
};

/// Writes `page` with the frames inside. The file appears when it is whole; a file that was there
/// is left as it is until then. Throws InputError.
void exportPage(const ExportTarget& target, std::string_view page, std::istream& recording,
                const std::vector<RecordedFrame>& frames);

}  // namespace drawview
