// Progress messages of long numerical operations, and the user's wish to stop them.
#pragma once

#include <kilnbase/export.h>
#include <vx/export.h>

/// Reports how far an operation has come.
///
/// Fitting, constraint solving and tolerance iterations hold a reporter and call it once per step.
/// The reporter puts the name of the operation (the option name) before fixed messages and passes
/// them to `rptStatus` and `rptUser`. A reporter that is not loud reports nothing.
///
///     TbaseReporter reporter("Fit", 1);
///     double deviation = 16.0;
///     for (int i = 1; i <= 10 && deviation >= 1.0 && !reporter.quit(); ++i) {
///       deviation /= 4.0;    // a step of the operation
///       reporter.toleranceReport(i, 10, 0.5, 0.25, deviation);
///     }
class KILNBASE_API TbaseReporter {
 public:
  /// A printf-style function that shows a message.
  using Prompt VX_PRINTF(1, 2) = void (*)(const char* format, ...);

  /// Message hooks for callers, which the application may replace. Kept as it is: the reports below
  /// call `rptStatus` and `rptUser` directly.
  static Prompt sPrompt;        ///< `rptUser` from load on.
  static Prompt sPromptNoHist;  ///< `rptUser` from load on.
  static Prompt sPromptStatus;  ///< `rptStatus` from load on.

  /// No option name, not loud.
  TbaseReporter();
  /// The option name becomes the first 11 characters of `name`, or empty for null.
  TbaseReporter(const char* name, int loud);
  TbaseReporter(const TbaseReporter&) = default;
  TbaseReporter& operator=(const TbaseReporter&) = default;
  virtual ~TbaseReporter();

  /// Reports the tolerance that iteration `i` has achieved, to the user. The message offers ESC to
  /// stop unless requested > achieved.
  virtual void tolReport(int i, double achieved, double requested) const;

  /// Reports that a constraint solver is at iteration `i`.
  void iterationsReport(int i) const;
  /// Reports that a constraint solver has done the fraction `f` of its work, 0 to 1.
  void percentageReport(double f) const;
  /// Reports on the status line that there is not enough memory to complete the operation.
  void noMemoryReport() const;
  /// Reports fitting iteration `i` of at most `max`: the deviation divided by the tolerance, and
  /// the place (u, v) of the deviation. The place is left out when |dev| < 1e-9. The message offers
  /// ESC to stop when dev >= 1 and i < max.
  void toleranceReport(int i, int max, double u, double v, double dev) const;

  /// 0 for a reporter that reports nothing.
  int loud() const { return loud_; }
  int& loud() { return loud_; }

  /// 1 when the user has asked to stop (`rptCheckAbort`), else 0.
  int quit() const;
  /// Waits for `n` milliseconds and returns `n`.
  unsigned int sleep(unsigned int n) const;

 protected:
  /// Sets the option name to the first 11 characters of `name`, or empty for null.
  void setOptionName(const char* name);

 private:
  char optionName_[12] = "";
  int loud_ = 0;
};
