// Progress of long numerical operations: what the user sees, and whether the user wants them to
// stop.
#pragma once

#include <kilnbase/export.h>
#include <vx/export.h>

/// Reports how far an operation has come.
///
/// Fitting, constraint solving and tolerance iterations hold a reporter and call it once a step. It
/// puts the name of the operation (the option name) before fixed messages and hands them to
/// `rptStatus` and `rptUser`. A reporter that is not loud reports nothing.
///
///     TbaseReporter reporter("Fit", 1);
///     for (int i = 1; i <= max && !reporter.quit(); ++i) {
///       refine();
///       reporter.toleranceReport(i, max, u, v, deviation);
///     }
class KILNBASE_API TbaseReporter {
 public:
  /// A printf-style function that shows a message.
  using Prompt VX_PRINTF(1, 2) = void (*)(const char* format, ...);

  /// Message hooks for callers, which the application may replace; the reports below do not use
  /// them.
  static Prompt sPrompt;        ///< `rptUser` from load on.
  static Prompt sPromptNoHist;  ///< `rptUser` from load on.
  static Prompt sPromptStatus;  ///< `rptStatus` from load on.

  /// No option name, not loud.
  TbaseReporter();
  /// The first 11 characters of `name` (null: none) become the option name.
  TbaseReporter(const char* name, int loud);
  TbaseReporter(const TbaseReporter&) = default;
  TbaseReporter& operator=(const TbaseReporter&) = default;
  virtual ~TbaseReporter();

  /// A message about iteration `i`, which ends the work when `requested > achieved`.
  virtual void tolReport(int i, double achieved, double requested) const;

  /// The status of iteration `i` of a constraint solver.
  void iterationsReport(int i) const;
  /// The status of a constraint solver that has done the fraction `f` of its work.
  void percentageReport(double f) const;
  void noMemoryReport() const;
  /// The status of fitting iteration `i` of at most `max`: the deviation relative to the tolerance
  /// (below 1: within it) and the place (u, v) where it is largest, left out when it is 0.
  void toleranceReport(int i, int max, double u, double v, double dev) const;

  /// 0 for a reporter that reports nothing.
  int loud() const { return loud_; }
  int& loud() { return loud_; }

  /// 1 when the user has asked to stop (`rptCheckAbort`), else 0.
  int quit() const;
  /// Waits for `n` milliseconds and returns `n`.
  unsigned int sleep(unsigned int n) const;

 protected:
  /// Keeps the first 11 characters; null clears the name.
  void setOptionName(const char* name);

 private:
  char optionName_[12] = "";
  int loud_ = 0;
};
