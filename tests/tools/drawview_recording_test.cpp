#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>

#include "tests/support/TemporaryFolder.h"
#include "tools/drawview/Export.h"
#include "tools/drawview/InputError.h"
#include "tools/drawview/Recording.h"

namespace {

using drawview::InputError;
using drawview::RecordedFrame;
using drawview::RecordingContents;
using drawview::RecordingWriter;
using kilntest::readFile;
using kilntest::TemporaryFolder;

// Three frames, one of them without a name, one without a message.
const std::vector<std::pair<std::string, std::string>> kFrames = {
    {"first", std::string(70000, 'x') + "end"}, {"", "12345678"}, {"</script>", ""}};

std::filesystem::path record(const TemporaryFolder& folder) {
  const std::filesystem::path path = folder.path() / "frames";
  RecordingWriter writer(path, false);
  for (const auto& [name, message] : kFrames) writer.add(name, message);
  return path;
}

RecordingContents contentsOf(const std::string& bytes) {
  std::istringstream file(bytes);
  return drawview::scanRecording(file);
}

std::vector<std::string> namesIn(const RecordingContents& contents) {
  std::vector<std::string> names;
  for (const RecordedFrame& frame : contents.frames) names.push_back(frame.name);
  return names;
}

TEST(DrawviewRecording, GivesBackWhatWasAdded) {
  const TemporaryFolder folder;
  std::ifstream file(record(folder), std::ios::binary);
  const RecordingContents contents = drawview::scanRecording(file);
  ASSERT_EQ(contents.frames.size(), kFrames.size());
  EXPECT_TRUE(contents.damages.empty());
  EXPECT_EQ(contents.tornAt, std::nullopt);
  for (std::size_t i = kFrames.size(); i-- > 0;) {
    EXPECT_EQ(contents.frames[i].name, kFrames[i].first);
    EXPECT_EQ(drawview::readMessage(file, contents.frames[i]), kFrames[i].second);
  }
}

// Small frames: every place is tried.
class DamagedRecording : public testing::Test {
 protected:
  DamagedRecording() {
    RecordingWriter writer(folder_.path() / "frames", false);
    for (const char* name : {"one", "two", "three"}) {
      ends_.push_back(std::filesystem::file_size(folder_.path() / "frames"));
      writer.add(name, "message");
    }
    bytes_ = readFile(folder_.path() / "frames");
  }

  // The number of the record that holds a byte, and where it begins.
  std::size_t recordOf(std::size_t at) const {
    return static_cast<std::size_t>(std::ranges::upper_bound(ends_, at) - ends_.begin()) - 1;
  }

  TemporaryFolder folder_;
  std::vector<std::uintmax_t> ends_;  // of the records and the magic before each
  std::string bytes_;
};

TEST_F(DamagedRecording, BreaksOffAtEveryPlace) {
  for (std::size_t size = 0; size < bytes_.size(); ++size) {
    const RecordingContents contents = contentsOf(bytes_.substr(0, size));
    const std::size_t whole = size < ends_[0] ? 0 : recordOf(size);
    EXPECT_EQ(contents.frames.size(), whole) << size;
    EXPECT_TRUE(contents.damages.empty()) << size;
    const bool isEdge = std::ranges::find(ends_, size) != ends_.end();
    EXPECT_EQ(contents.tornAt.has_value(), !isEdge) << size;
    if (contents.tornAt && size > ends_[0]) {
      EXPECT_EQ(*contents.tornAt, ends_[whole]);
    }
  }
}

TEST_F(DamagedRecording, IsToldForEveryByte) {
  constexpr std::size_t kHeadBytes = 16;
  for (std::size_t at = 0; at < bytes_.size(); ++at) {
    std::string bytes = bytes_;
    bytes[at] = static_cast<char>(bytes[at] ^ 1 << at % 8);
    const RecordingContents contents = contentsOf(bytes);
    ASSERT_EQ(contents.damages.size(), 1u) << at;
    EXPECT_EQ(contents.tornAt, std::nullopt) << at;
    std::vector<std::string> names = {"one", "two", "three"};
    if (at < ends_[0]) {
      names.clear();
    } else {
      const auto record = static_cast<std::ptrdiff_t>(recordOf(at));
      EXPECT_EQ(contents.damages[0].offset, ends_[recordOf(at)]);
      const bool isLength = at < ends_[recordOf(at)] + kHeadBytes;
      names.erase(names.begin() + record, isLength ? names.end() : names.begin() + record + 1);
    }
    EXPECT_EQ(namesIn(contents), names) << at;
  }
}

TEST(DrawviewRecording, LeavesOtherFilesAlone) {
  const TemporaryFolder folder;
  const std::filesystem::path path = folder.write("frames", "dear");
  EXPECT_THROW(RecordingWriter(path, false), InputError);
  EXPECT_THROW(RecordingWriter(folder.path(), true), InputError);
  EXPECT_EQ(readFile(path), "dear");
  const RecordingWriter first(path, true);
  EXPECT_EQ(readFile(path), "KILNDRW1");
  EXPECT_THROW(RecordingWriter(path, true), InputError);
}

constexpr std::string_view kPage = "<body><!--KILN-FRAMES--></body>";

TEST(DrawviewExport, HoldsFramesAndNamesAsText) {
  const TemporaryFolder folder;
  std::ifstream file(record(folder), std::ios::binary);
  auto frames = drawview::scanRecording(file).frames;
  frames.erase(frames.begin());
  frames[0].name = "\"\xff\n";
  const std::filesystem::path path = folder.write("page.html", "dear");
  EXPECT_THROW(drawview::exportPage({path, false}, kPage, file, frames), InputError);
  EXPECT_THROW(drawview::exportPage({path, true}, "<body></body>", file, frames), InputError);
  EXPECT_EQ(readFile(path), "dear");
  drawview::exportPage({path, true}, kPage, file, frames);
  EXPECT_EQ(readFile(path),
            "<body><ol id=\"kiln-frame-names\" hidden>\n<li>&quot;�\n</li>\n"
            "<li>&lt;/script&gt;</li>\n</ol>\n"
            "<script type=\"application/x-kiln-frame\" data-number=\"1\" data-name=\"&quot;�\n\">"
            "MTIzNDU2Nzg=</script>\n"
            "<script type=\"application/x-kiln-frame\" data-number=\"2\" "
            "data-name=\"&lt;/script&gt;\"></script>\n</body>");
  EXPECT_EQ(folder.names(), "frames page.html ");
}

TEST(DrawviewExport, CutsLongMessagesWhereBase64MayBeCut) {
  const TemporaryFolder folder;
  RecordingWriter(folder.path() / "frames", false).add("", std::string(200000, 'x') + "end");
  std::ifstream file(folder.path() / "frames", std::ios::binary);
  const auto frames = drawview::scanRecording(file).frames;
  drawview::exportPage({folder.path() / "page", false}, kPage, file, frames);
  const std::string page = readFile(folder.path() / "page");
  EXPECT_EQ(std::ranges::count(page, '='), 5);
  EXPECT_TRUE(page.find("eHhlbmQ=</script>") != std::string::npos);
}

}  // namespace
