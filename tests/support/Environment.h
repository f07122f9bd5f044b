// What a program finds when it starts, in UTF-8 on every system.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace kilntest {

void setEnvironment(const std::string& name, const std::string& value);
void unsetEnvironment(const std::string& name);

// Brings an environment variable back when a test ends.
class KeptEnvironment {
 public:
  explicit KeptEnvironment(const std::string& name) : name_(name) {
    if (const char* value = std::getenv(name.c_str())) value_ = value;
  }
  ~KeptEnvironment() { value_ ? setEnvironment(name_, *value_) : unsetEnvironment(name_); }
  KeptEnvironment(const KeptEnvironment&) = delete;
  KeptEnvironment& operator=(const KeptEnvironment&) = delete;

 private:
  std::string name_;
  std::optional<std::string> value_;
};

// The arguments of main as the system passed them, without the program's name.
std::vector<std::string> receivedArguments(int count, char** arguments);

}  // namespace kilntest
