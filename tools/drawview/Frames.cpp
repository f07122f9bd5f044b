#include "tools/drawview/Frames.h"

#include <algorithm>
#include <utility>

namespace drawview {

std::vector<std::uint64_t> FrameStore::add(Frame frame) {
  std::vector<std::uint64_t> dropped;
  while (!frames_.empty() && cost(frame) > mostBytes_ - bytes_) {
    dropped.push_back(frames_.front().number);
    bytes_ -= cost(frames_.front());
    frames_.pop_front();
  }
  bytes_ += cost(frame);
  frames_.push_back(std::move(frame));
  return dropped;
}

const Frame* FrameStore::find(std::uint64_t number) const {
  const auto found = std::ranges::lower_bound(frames_, number, {}, &Frame::number);
  return found != frames_.end() && found->number == number ? &*found : nullptr;
}

}  // namespace drawview
