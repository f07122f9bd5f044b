// What is wrong with something that the user gave, and what to do about it.
#pragma once

#include <stdexcept>

namespace surfacefit {

/// Ends the program with this message and exit code 2.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace surfacefit
