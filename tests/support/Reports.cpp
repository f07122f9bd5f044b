#include "tests/support/Reports.h"

#include <utility>

namespace kilntest {

namespace {

std::vector<std::string> reports;
const RecordedReports* recorder = nullptr;

constexpr RptSinks kRecordingSinks = {
    [](const char* text) { reports.push_back(std::string("error: ") + text); },
    [](const char* text) { reports.push_back(std::string("user: ") + text); },
    [](const char* text) { reports.push_back(std::string("status: ") + text); },
    [] { return recorder->asksToStop; },
    [](unsigned int milliseconds) { reports.push_back("sleep: " + std::to_string(milliseconds)); },
    [](const char* text) { reports.push_back(std::string("confirm: ") + text); },
    [](int level, const char* text) {
      reports.push_back("debug " + std::to_string(level) + ": " + text);
    }};

}  // namespace

RecordedReports::RecordedReports() : previous_(rptSetSinks(&kRecordingSinks)) {
  reports.clear();
  recorder = this;
}

RecordedReports::~RecordedReports() {
  asksToStop = false;
  rptResetAbort();
  rptSetSinks(&previous_);
}

std::vector<std::string> RecordedReports::takeAll() {
  return std::exchange(reports, {});
}

}  // namespace kilntest
