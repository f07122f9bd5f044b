#include "families/Trace.h"

#include <cstdio>
#include <unistd.h>

#include <kilnbase/services/MorlaTrace.h>

namespace bench {

namespace {

constexpr std::size_t kRingBytes = 1 << 20;

void keepText(void* last, const char* text) {
  *static_cast<std::string*>(last) = text;
}

class OurTrace {
 public:
  OurTrace() { MorlaTrace::initialize(traceFolder().c_str(), kRingBytes, 1); }

  void write(int i, int n) { MorlaTrace::trace1(MorlaTrace::UI, "picked %d of %d", i, n); }
  std::string last() const {
    std::string text;
    MorlaTrace::dump(keepText, &text);
    return text.substr(text.find("> ") + 2);
  }
};

class OurTraceAboveLevel {
 public:
  OurTraceAboveLevel() { MorlaTrace::initialize(traceFolder().c_str(), kRingBytes, 1); }

  void write(int i, int n) { MorlaTrace::trace2(MorlaTrace::UI, "picked %d of %d", i, n); }
  std::string last() const { return ""; }
};

// What the measurement itself takes.
class NoTrace {
 public:
  void write(int, int) {}
  std::string last() const { return ""; }
};

class PrintIntoArray {
 public:
  void write(int i, int n) { std::snprintf(text, sizeof text, "picked %d of %d", i, n); }
  std::string last() const { return text; }

 private:
  static inline char text[256];
};

}  // namespace

const std::filesystem::path& traceFolder() {
  static const struct Folder {
    Folder() { std::filesystem::create_directories(path); }
    ~Folder() {
      std::error_code ignored;
      std::filesystem::remove_all(path, ignored);
    }
    std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("kiln_bench-" + std::to_string(getpid()));
  } folder;
  return folder.path;
}

void addTrace(Suite& suite) {
  const std::vector<Shape> one = {{1, 1}};
  suite.add({kTraceLine,
             one,
             {"spdlog"},
             [](const Shape&) { return Limits{.named = 0.3}; },
             traceMaker<OurTrace>(),
             {{"snprintf", traceMaker<PrintIntoArray>()}}});
  suite.add({kLineAboveLevel,
             one,
             {},
             [](const Shape&) { return Limits{}; },
             traceMaker<OurTraceAboveLevel>(),
             {{"nothing", traceMaker<NoTrace>()}}});
}

}  // namespace bench
