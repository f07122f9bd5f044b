#include <algorithm>
#include <charconv>
#include <sstream>
#include <string_view>
#include <vector>

#include <vx/os/posix/MemoryTexts.h>

namespace vxOS::sysInfo {

namespace {

using std::string;
using std::string_view;

// In kilobytes.
struct Amount {
  std::uint64_t total;
  std::uint64_t available;

  void limit(std::uint64_t most, std::uint64_t used) {
    total = std::min(total, most);
    available = std::min(available, most - std::min(used, most));
  }
};

struct Memory {
  Amount physical;
  Amount swap;
  Amount both = {UINT64_MAX, UINT64_MAX};  // what limits the sum of physical memory and swap
};

// The number that a text begins with, after blanks.
std::optional<std::uint64_t> number(string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  std::uint64_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc() ? std::optional(value) : std::nullopt;
}

std::optional<std::uint64_t> numberIn(const ReadFile& read, const string& path) {
  const std::optional<string> text = read(path);
  return text ? number(*text) : std::nullopt;
}

// The number behind `name` at the start of a line.
std::optional<std::uint64_t> numberAfter(const string& text, string_view name) {
  std::istringstream lines(text);
  for (string line; std::getline(lines, line);)
    if (line.starts_with(name)) return number(string_view(line).substr(name.size()));
  return std::nullopt;
}

Memory memoryOfMachine(const string& text) {
  const auto kilobytes = [&text](const char* name) { return numberAfter(text, name).value_or(0); };
  const auto amount = [](std::uint64_t total, std::uint64_t available) {
    return Amount{total, std::min(available, total)};
  };
  const std::uint64_t available =
      numberAfter(text, "MemAvailable:").value_or(kilobytes("MemFree:"));
  return {amount(kilobytes("MemTotal:"), available),
          amount(kilobytes("SwapTotal:"), kilobytes("SwapFree:"))};
}

// A mounted hierarchy of control groups that may limit memory.
struct Hierarchy {
  bool isUnified;     // version 2
  string root;        // the group at the mount point
  string mountPoint;  // its folder
};

// Whether a list with commas holds "memory".
bool namesMemory(const string& list) {
  std::istringstream names(list);
  for (string name; std::getline(names, name, ',');)
    if (name == "memory") return true;
  return false;
}

// Reads a line of proc_pid_mountinfo(5).
std::optional<Hierarchy> hierarchy(const string& line) {
  std::istringstream before(line);
  std::istringstream behind(line.substr(std::min(line.find(" - ") + 2, line.size())));
  string id, parent, device, root, mountPoint, type, source, options;
  before >> id >> parent >> device >> root >> mountPoint;
  behind >> type >> source >> options;
  if (type == "cgroup2") return Hierarchy{true, root, mountPoint};
  if (type == "cgroup" && namesMemory(options)) return Hierarchy{false, root, mountPoint};
  return std::nullopt;
}

std::vector<Hierarchy> hierarchies(const ReadFile& read) {
  std::istringstream mounts(read("/proc/self/mountinfo").value_or(""));
  std::vector<Hierarchy> result;
  for (string line; std::getline(mounts, line);)
    if (const std::optional<Hierarchy> found = hierarchy(line)) result.push_back(*found);
  return result;
}

// The group of the process, from proc_pid_cgroup(5): lines of "id:controllers:group".
string groupOfProcess(const ReadFile& read, bool isUnified) {
  std::istringstream lines(read("/proc/self/cgroup").value_or(""));
  string id, controllers, group;
  while (std::getline(lines, id, ':') && std::getline(lines, controllers, ':') &&
         std::getline(lines, group))
    if (isUnified ? controllers.empty() : namesMemory(controllers)) return group;
  return {};
}

// The folder of the group below the mount point. A group that is not below the mounted one has
// none: the mounted group alone counts.
string folderBelow(const Hierarchy& mounted, const string& group) {
  const string root = mounted.root == "/" ? "" : mounted.root;
  if (!group.starts_with(root + "/")) return {};
  return group == "/" ? "" : group.substr(root.size());
}

void limit(Amount& amount, const ReadFile& read, const string& most, const string& used,
           std::uint64_t reclaimable) {
  const std::optional<std::uint64_t> bytes = numberIn(read, most);
  if (!bytes) return;
  const std::uint64_t inUse = numberIn(read, used).value_or(0);
  amount.limit(*bytes / 1024, (inUse - std::min(inUse, reclaimable)) / 1024);
}

// Applies the limits of one group, whose files stand in `folder`.
void limitByGroup(Memory& memory, const ReadFile& read, const string& folder, bool isUnified) {
  const string statistics = read(folder + "memory.stat").value_or("");
  const std::uint64_t inactive =
      numberAfter(statistics, isUnified ? "inactive_file " : "total_inactive_file ").value_or(0);
  if (isUnified) {
    limit(memory.physical, read, folder + "memory.max", folder + "memory.current", inactive);
    limit(memory.swap, read, folder + "memory.swap.max", folder + "memory.swap.current", 0);
  } else {
    limit(memory.physical, read, folder + "memory.limit_in_bytes", folder + "memory.usage_in_bytes",
          inactive);
    limit(memory.both, read, folder + "memory.memsw.limit_in_bytes",
          folder + "memory.memsw.usage_in_bytes", inactive);
  }
}

void limitByGroups(Memory& memory, const ReadFile& read, const Hierarchy& mounted) {
  string folder = folderBelow(mounted, groupOfProcess(read, mounted.isUnified));
  for (;; folder.resize(folder.rfind('/'))) {
    limitByGroup(memory, read, mounted.mountPoint + folder + "/", mounted.isUnified);
    if (folder.empty()) return;
  }
}

}  // namespace

MemoryFigures memoryFromTexts(const ReadFile& read, AddressSpace addressSpace) {
  Memory memory = memoryOfMachine(read("/proc/meminfo").value_or(""));
  for (const Hierarchy& mounted : hierarchies(read)) limitByGroups(memory, read, mounted);
  Amount sum = {memory.physical.total + memory.swap.total,
                memory.physical.available + memory.swap.available};
  sum.limit(memory.both.total, memory.both.total - memory.both.available);
  sum.limit(addressSpace.limit, addressSpace.used);
  return {memory.physical.total, memory.physical.available, sum.total, sum.available};
}

}  // namespace vxOS::sysInfo
