#include <fstream>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include "families/Trace.h"

namespace bench {

namespace {

class SpdlogFile {
 public:
  void write(int i, int n) { logger.info("picked {} of {}", i, n); }
  std::string last() const {
    sink->flush();
    std::ifstream file(sink->filename());
    std::string last;
    for (std::string line; std::getline(file, line);) last = line;
    return last.substr(last.rfind("] ") + 2);
  }

 protected:
  std::shared_ptr<spdlog::sinks::basic_file_sink_st> sink =
      std::make_shared<spdlog::sinks::basic_file_sink_st>(traceFolder() / "spdlog.log", true);
  spdlog::logger logger{"bench", sink};
};

class SpdlogAboveLevel : public SpdlogFile {
 public:
  void write(int i, int n) { logger.debug("picked {} of {}", i, n); }
  std::string last() const { return ""; }
};

}  // namespace

std::string addSpdlog(Suite& suite) {
  suite.addPeer(kTraceLine, {"spdlog", traceMaker<SpdlogFile>()});
  suite.addPeer(kLineAboveLevel, {"spdlog", traceMaker<SpdlogAboveLevel>()});
  return "spdlog: basic_file_sink_st with the default pattern, version " +
         std::to_string(SPDLOG_VER_MAJOR) + "." + std::to_string(SPDLOG_VER_MINOR);
}

}  // namespace bench
