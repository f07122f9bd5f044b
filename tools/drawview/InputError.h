// What goes wrong by the user's or the system's doing.
#pragma once

#include <stdexcept>

namespace drawview {

/// A message for the user; the program ends with the exit code 2.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace drawview
