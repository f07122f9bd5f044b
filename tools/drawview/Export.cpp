#include "tools/drawview/Export.h"

#include <fstream>
#include <optional>
#include <ostream>
#include <string>
#include <system_error>

#include <vx/Uuid.h>

#include "tools/drawview/InputError.h"
#include "tools/drawview/Paths.h"
#include "tools/drawview/Text.h"

namespace drawview {

namespace fs = std::filesystem;

namespace {

// The names as text of the page, which a search over files finds.
void writeNames(std::ostream& out, const std::vector<RecordedFrame>& frames) {
  out << "<ol id=\"kiln-frame-names\" hidden>\n";
  for (const RecordedFrame& frame : frames) out << "<li>" << htmlText(frame.name) << "</li>\n";
  out << "</ol>\n";
}

void writeFrame(std::ostream& out, std::size_t number, const std::string& name,
                std::string_view message) {
  constexpr std::size_t kPieceBytes = std::size_t{3} << 16;
  out << "<script type=\"application/x-kiln-frame\" data-number=\"" << number << "\" data-name=\""
      << htmlText(name) << "\">";
  for (std::size_t start = 0; start < message.size(); start += kPieceBytes) {
    std::string piece;
    appendBase64(piece, message.substr(start, kPieceBytes));
    out << piece;
  }
  out << "</script>\n";
}

void writePage(std::ostream& out, std::string_view page, std::istream& recording,
               const std::vector<RecordedFrame>& frames) {
  const std::size_t place = page.find(kFramesPlace);
  if (place == std::string_view::npos)
    throw InputError("this program was built without its page, which an export needs");
  out << page.substr(0, place);
  writeNames(out, frames);
  for (std::size_t i = 0; i < frames.size(); ++i) {
    const std::optional<std::string> message = readMessage(recording, frames[i]);
    if (!message) throw InputError("the recording has changed while it was read");
    writeFrame(out, i + 1, frames[i].name, *message);
  }
  out << page.substr(place + kFramesPlace.size());
}

// A file beside the one that is to come, which goes unless it takes that one's place.
class FileBeside {
 public:
  explicit FileBeside(const fs::path& target) : target_(target), path_(target) {
    path_ += std::string(".") + vxOS::Uuid::generate().asString().c_str();
    file_.open(path_, std::ios::binary);
  }
  ~FileBeside() {
    file_.close();
    std::error_code error;
    fs::remove(path_, error);
  }
  FileBeside(const FileBeside&) = delete;
  FileBeside& operator=(const FileBeside&) = delete;

  std::ostream& stream() { return file_; }
  bool replaceTarget() {
    file_.close();
    std::error_code error;
    if (file_) fs::rename(path_, target_, error);
    return file_ && !error;
  }

 private:
  fs::path target_;
  fs::path path_;
  std::ofstream file_;
};

}  // namespace

void exportPage(const ExportTarget& target, std::string_view page, std::istream& recording,
                const std::vector<RecordedFrame>& frames) {
  requireFree(target.path, target.force);
  FileBeside file(target.path);
  writePage(file.stream(), page, recording, frames);
  if (!file.replaceTarget()) throw InputError("cannot write " + pathText(target.path));
}

}  // namespace drawview
