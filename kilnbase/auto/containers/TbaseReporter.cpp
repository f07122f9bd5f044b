#include <cmath>
#include <cstring>

#include <kilnbase/auto/containers/TbaseReporter.h>
#include <vx/Report.h>

TbaseReporter::Prompt TbaseReporter::sPrompt = rptUser;
TbaseReporter::Prompt TbaseReporter::sPromptNoHist = rptUser;
TbaseReporter::Prompt TbaseReporter::sPromptStatus = rptStatus;

TbaseReporter::TbaseReporter() = default;

TbaseReporter::TbaseReporter(const char* name, int loud) : loud_(loud) {
  setOptionName(name);
}

TbaseReporter::~TbaseReporter() = default;

void TbaseReporter::tolReport(int i, double achieved, double requested) const {
  if (loud_ == 0) return;
  if (requested > achieved) {
    rptUser("%s:  Iteration %d.  Tolerance achieved: %6.4f (Requested %6.4f).", optionName_, i,
            achieved, requested);
  } else {
    rptUser("%s:  Iteration %d.  Tolerance achieved: %6.4f (Requested %6.4f).  (ESC to stop).",
            optionName_, i, achieved, requested);
  }
}

void TbaseReporter::iterationsReport(int i) const {
  if (loud_ == 0) return;
  rptStatus(" %s:  Constraint solving.  Iteration %d (ESC to stop).", optionName_, i);
}

void TbaseReporter::percentageReport(double f) const {
  if (loud_ == 0) return;
  rptStatus(" %s:  Constraint solving ... %4.1f%% completed", optionName_, f * 100);
}

void TbaseReporter::noMemoryReport() const {
  if (loud_ == 0) return;
  rptStatus("%s: Not enough memory to complete this operation.", optionName_);
}

void TbaseReporter::toleranceReport(int i, int max, double u, double v, double dev) const {
  if (loud_ == 0) return;
  if (std::fabs(dev) < 1e-9) {
    rptStatus("%s: Fitting iteration %d (of max. %d). Rel. deviation: %6.4f.", optionName_, i, max,
              dev);
  } else if (dev < 1.0 || i >= max) {
    rptStatus("%s: Fitting iteration %d (of max. %d). Rel. deviation: %6.4f at (%6.4f, %6.4f).",
              optionName_, i, max, dev, u, v);
  } else {
    rptStatus(
        "%s: Fitting iteration %d (of max. %d). Rel. deviation: %6.4f at (%6.4f, %6.4f). (ESC to "
        "stop).",
        optionName_, i, max, dev, u, v);
  }
}

int TbaseReporter::quit() const {
  return rptCheckAbort() ? 1 : 0;
}

unsigned int TbaseReporter::sleep(unsigned int n) const {
  rptSleep(n);
  return n;
}

void TbaseReporter::setOptionName(const char* name) {
  std::memset(optionName_, 0, sizeof optionName_);
  if (name != nullptr) std::strncpy(optionName_, name, sizeof optionName_ - 1);
}
