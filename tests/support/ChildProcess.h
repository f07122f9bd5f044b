// A program that runs beside the tests until it is killed.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kilntest {

class ChildProcess {
 public:
  // Starts a command, none of whose words holds a blank or a quote. The standard output goes to the
  // file `output` unless that is empty.
  explicit ChildProcess(const std::vector<std::string>& command, const std::string& output = "");
  ~ChildProcess() { kill(); }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // Ends the process at whatever instruction it is, and waits for its end.
  void kill();
  // Asks the process to end (SIGTERM), where the system can do so.
  void terminate();
  // Waits until the process ends by itself: its exit code.
  int wait();

 private:
  std::intptr_t process_ = 0;  // the system's number or handle; 0: none
};

}  // namespace kilntest
