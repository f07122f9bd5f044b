// Records the reports that are made while it lives, instead of showing them.
#pragma once

#include <string>
#include <vector>

#include <vx/Report.h>

namespace kilntest {

class RecordedReports {
 public:
  RecordedReports();
  ~RecordedReports();
  RecordedReports(const RecordedReports&) = delete;
  RecordedReports& operator=(const RecordedReports&) = delete;

  // The reports since the last call, in order, such as "status: 3 of 10" or "error: out of
  // range\n".
  std::vector<std::string> takeAll();

  // Whether the user asks to stop.
  bool asksToStop = false;

 private:
  RptSinks previous_;
};

}  // namespace kilntest
