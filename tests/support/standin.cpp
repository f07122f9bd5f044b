// Stands in for programs that the library starts, the warning program among them: records its
// arguments and exits with a chosen code. See RecordingProgram.h.
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "tests/support/Environment.h"

int main(int argc, char** argv) {
  const char* record = std::getenv("KILNTEST_RECORD");
  const char* exitCode = std::getenv("KILNTEST_EXIT_CODE");
  if (record == nullptr || exitCode == nullptr) return EXIT_FAILURE;
  const std::vector<std::string> arguments = kilntest::receivedArguments(argc, argv);
  std::ofstream file(record, std::ios::binary);
  for (const std::string& argument : arguments) file << argument << '\0';
  std::puts("recorded");
  return std::atoi(exitCode);
}
