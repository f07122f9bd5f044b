// One line of a trace, written in several ways.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "families/Families.h"

namespace bench {

constexpr const char* kTraceLine = "trace line";
constexpr int kTraceLines = 100000;
constexpr const char* kLineAboveLevel = "trace line above the level";

/// The folder of all files of the traces, removed at the end of the program.
const std::filesystem::path& traceFolder();

/// A way: `write(i, n)` writes "picked i of n", `last()` is the text that was written last.
template <class Way>
Maker traceMaker() {
  return [](const Shape&) {
    const auto run = [way = std::make_shared<Way>(), i = 0]() mutable -> const Way& {
      i = i < kTraceLines ? i + 1 : 1;
      way->write(i, kTraceLines);
      return *way;
    };
    return contestant(run, [](const Way& way) {
      const std::string text = way.last();
      return Values(text.begin(), text.end());
    });
  };
}

}  // namespace bench
