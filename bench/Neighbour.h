// A busy machine: what users' machines are.
#pragma once

#include <sys/types.h>

namespace bench {

/// Another process that streams through memory on another CPU for as long as this lives. The
/// calling process, and those that it starts from then on, stay on the CPU where it is.
///
/// Throws std::runtime_error where there is no other CPU.
class Neighbour {
 public:
  Neighbour();
  ~Neighbour();
  Neighbour(const Neighbour&) = delete;
  Neighbour& operator=(const Neighbour&) = delete;

  /// Throws std::runtime_error when the other process has ended.
  void requireAlive() const;

 private:
  pid_t child_;
};

}  // namespace bench
