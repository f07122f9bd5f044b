// Records the numeric errors that are raised while it lives, instead of aborting.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <kilnbase/linalg/MathError.h>

namespace kilntest {

struct RaisedMathError {
  std::uint16_t number;
  std::uint32_t severity;
  std::uint16_t classTag;
  std::string text;  // the formatted message
};

class RecordedMathErrors {
 public:
  RecordedMathErrors();
  ~RecordedMathErrors();
  RecordedMathErrors(const RecordedMathErrors&) = delete;
  RecordedMathErrors& operator=(const RecordedMathErrors&) = delete;

  // The messages since the last call, in the order in which they were raised.
  std::vector<std::string> takeTexts();
  std::vector<RaisedMathError> takeAll();

 private:
  vxKilnBase::MathErrorHandler previous_;
};

// A call and the one error that it raises.
struct FailingCall {
  std::function<void()> call;
  vxKilnBase::MathErrorNumber number;
  std::string text;
  std::uint16_t classTag = 0xF000;
};
void expectErrors(const std::vector<FailingCall>& table);

}  // namespace kilntest
