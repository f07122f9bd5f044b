#include "tools/drawview/Viewer.h"

#include <chrono>
#include <memory>
#include <utility>

#include "tools/drawview/Message.h"
#include "tools/drawview/Page.h"

namespace drawview {

using vxKilnBase::KilnDebugDrawFrame;

namespace {

std::int64_t millisecondsNow() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

}  // namespace

Viewer::Viewer(const Options& options, std::uint64_t mostBytes)
    : listenHost_(options.listenHost),
      mostBytes_(mostBytes),
      server_({options.httpPort, kPage, false}, FrameStore(mostBytes)),
      receiver_({options.listenHost, options.listenPort, mostBytes}) {
  if (!options.record.empty()) recording_.emplace(options.record, options.force);
  server_.setListenAddress(listenAddress());
  receiver_.start({[this](const KilnDebugDrawFrame& frame) { add(frame); },
                   [this](bool isConnected) { setSender(isConnected); },
                   [this](const char* what) { note(what); }});
}

void Viewer::add(const KilnDebugDrawFrame& frame) {
  const std::uint64_t number = lastNumber_ + 1;
  auto message =
      encodeMessage(frame, {number, millisecondsNow()}, mostBytes_ - FrameStore::kBytesPerFrame);
  if (!message) return note("a frame that is larger than the memory for all frames was dropped");
  lastNumber_ = number;
  const std::string name(frame.name.view());
  record(name, *message);
  const Message shared = std::make_shared<const std::string>(std::move(*message));
  server_.add({number, name, shared->size(), [shared]() -> const Message& { return shared; }});
}

void Viewer::record(std::string_view name, std::string_view message) {
  if (!recording_) return;
  try {
    recording_->add(name, message);
  } catch (const InputError& error) {
    note(error.what());
    hasLostRecording_ = true;
    recording_.reset();
  }
}

void Viewer::setSender(bool isConnected) {
  hasSender_ = isConnected;
  if (!isConnected) hasServed_ = true;
  server_.setSender(isConnected);
}

void Viewer::note(std::string text) {
  const std::lock_guard lock(guard_);
  notes_.push_back(std::move(text));
}

std::vector<std::string> Viewer::takeNotes() {
  const std::lock_guard lock(guard_);
  return std::exchange(notes_, {});
}

}  // namespace drawview
