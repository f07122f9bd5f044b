// How every program ends.
#pragma once

#include <exception>
#include <iostream>
#include <new>
#include <stdexcept>

#include <vx/Report.h>

/// Runs `work`, which returns the exit code. What `work` throws is told on standard error behind
/// the name of the program, and so is output that could not be written; the exit code is then 2.
template <class Work>
int runReported(const char* name, Work work, const char* noMemory = "not enough memory") {
  try {
    const int code = work();
    if (!std::cout.flush()) throw std::runtime_error("cannot write to standard output");
    return code;
  } catch (const std::bad_alloc&) {
    rptError("%s: %s\n", name, noMemory);
  } catch (const std::exception& error) {
    rptError("%s: %s\n", name, error.what());
  }
  return 2;
}
