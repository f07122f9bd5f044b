// drawview reads a recording.
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include "tools/drawview/Recording.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream file(std::string(reinterpret_cast<const char*>(data), size));
  const drawview::RecordingContents contents = drawview::scanRecording(file);
  for (const drawview::RecordedFrame& frame : contents.frames)
    if (!drawview::readMessage(file, frame)) std::abort();
  if (contents.tornAt && *contents.tornAt > size) std::abort();
  return 0;
}
