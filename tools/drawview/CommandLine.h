// What the user asks for.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "tools/drawview/InputError.h"

namespace drawview {

/// Where senders find the viewer unless the user says otherwise.
constexpr int kDefaultSenderPort = 29710;

struct Options {
  std::string listenHost = "127.0.0.1";
  int listenPort = kDefaultSenderPort;  ///< 0: the system chooses.
  int httpPort = 0;                     ///< 0: the system chooses.
  std::filesystem::path record;         ///< Empty: no recording.
  std::filesystem::path replay;         ///< Empty: no replay, but senders.
  std::filesystem::path exportTo;       ///< Empty: no export.
  bool open = false;
  bool force = false;
  bool once = false;  ///< Only one sender.
};

/// Reads the command line. Help or a version that is asked for goes to standard output, and the
/// result is empty. Throws InputError for a command line that cannot be understood.
std::optional<Options> parseCommandLine(int argc, const char* const* argv);

}  // namespace drawview
