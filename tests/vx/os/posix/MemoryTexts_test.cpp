#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sys/resource.h>

#include <vx/os/posix/MemoryTexts.h>

using vxOS::sysInfo::AddressSpace;
using vxOS::sysInfo::memoryFromTexts;
using Texts = std::map<std::string, std::string>;

namespace {

// A machine with 8000 kB of memory and 2000 kB of swap, and what else its system tells.
std::string figures(Texts texts, AddressSpace addressSpace = {}) {
  texts.try_emplace("/proc/meminfo",
                    "MemTotal:        8000 kB\nMemFree:  1000 kB\nMemAvailable: 5000 kB\n"
                    "SwapTotal:   2000 kB\nSwapFree:     1500 kB\n");
  const auto read = [&texts](const std::string& path) {
    const auto found = texts.find(path);
    return found != texts.end() ? std::optional(found->second) : std::nullopt;
  };
  const vxOS::MemoryFigures memory = memoryFromTexts(read, addressSpace);
  return std::to_string(memory.totalPhysical) + " " + std::to_string(memory.availablePhysical) +
         " " + std::to_string(memory.totalVirtual) + " " + std::to_string(memory.availableVirtual);
}

const char* const kMachine = "8000 5000 10000 6500";

// A process in the group /pod/box of version 2.
Texts grouped(Texts texts, const char* root = "/") {
  texts["/proc/self/cgroup"] = "4:cpu,memory:/old\n1:name=systemd:/x\n0::/pod/box\n";
  texts["/proc/self/mountinfo"] =
      std::string("22 1 8:1 / / rw - ext4 /dev/root rw\n30 22 0:26 ") + root +
      " /cg rw,nosuid shared:4 - cgroup2 none rw\n" +
      "31 22 0:27 / /v1 rw - cgroup cgroup rw,memory\n32 22 0:28 / /v1cpu rw - cgroup cgroup rw,"
      "cpu\n";
  return texts;
}

}  // namespace

TEST(MemoryTexts, WithoutLimitsTheMachineCounts) {
  EXPECT_EQ(kMachine, figures({}));
  EXPECT_EQ("8000 1000 8000 1000",
            figures({{"/proc/meminfo", "MemTotal: 8000 kB\nMemFree: 1000 kB\n"}}));
  EXPECT_EQ("8000 8000 8000 8000",
            figures({{"/proc/meminfo", "MemTotal: 8000 kB\nMemAvailable: 9000 kB\n"}}));
  EXPECT_EQ(kMachine, figures(grouped({{"/cg/memory.max", "max\n"}})));
}

TEST(MemoryTexts, EveryGroupAroundTheProcessLimitsIt) {
  const std::string mib = "1048576\n";
  const std::string half = "524288\n";
  const std::pair<Texts, const char*> cases[] = {
      {{{"/cg/pod/box/memory.max", mib}}, "1024 1024 3024 2524"},
      {{{"/cg/pod/memory.max", mib}, {"/cg/pod/memory.current", half}}, "1024 512 3024 2012"},
      {{{"/cg/memory.max", mib}, {"/cg/memory.current", "9999999"}}, "1024 0 3024 1500"},
      {{{"/cg/memory.max", mib}, {"/cg/pod/memory.max", half}}, "512 512 2512 2012"},
      {{{"/cg/memory.max", mib},
        {"/cg/memory.current", half},
        {"/cg/memory.stat", "anon 7\ninactive_file 262144\n"}},
       "1024 768 3024 2268"},
      {{{"/cg/pod/box/memory.swap.max", "0\n"}}, "8000 5000 8000 5000"},
      {{{"/v1/old/memory.limit_in_bytes", mib},
        {"/v1/old/memory.usage_in_bytes", half},
        {"/v1/old/memory.stat", "inactive_file 9\ntotal_inactive_file 524288\n"}},
       "1024 1024 3024 2524"},
      {{{"/v1/memory.memsw.limit_in_bytes", mib}, {"/v1/memory.memsw.usage_in_bytes", half}},
       "8000 5000 1024 512"},
      {{{"/cg/pod/boxer/memory.max", "1"}, {"/v1/pod/box/memory.limit_in_bytes", "1"}}, kMachine},
      {{{"/v1cpu/old/memory.limit_in_bytes", "1"}}, kMachine}};
  for (const auto& [texts, expected] : cases) {
    EXPECT_EQ(expected, figures(grouped(texts))) << texts.begin()->first;
  }
}

TEST(MemoryTexts, AContainerSeesItsGroupAtTheMountPoint) {
  for (const char* root : {"/pod/box", "/elsewhere", "/pod/bo"})
    EXPECT_EQ("2 2 2002 1502", figures(grouped({{"/cg/memory.max", "2048"}}, root))) << root;
  EXPECT_EQ("2 2 2002 1502", figures(grouped({{"/cg/box/memory.max", "2048"}}, "/pod")));
}

TEST(MemoryTexts, DamagedTextsLimitNothing) {
  for (const char* text : {"", "max", "-1", "many", "99999999999999999999999"})
    EXPECT_EQ(kMachine, figures(grouped({{"/cg/memory.max", text}}))) << text;
  for (const char* text :
       {"", "0:", "0::", "\n\n", "0::/../..", "::::", " - ", "1 2 3 - cgroup2"}) {
    Texts texts = grouped({{"/cg/pod/box/memory.max", "2048"}});
    texts["/proc/self/cgroup"] = text;
    EXPECT_EQ(kMachine, figures(texts)) << text;
    EXPECT_EQ(kMachine, figures({{"/proc/self/mountinfo", text}})) << text;
  }
  EXPECT_EQ("0 0 0 0", figures({{"/proc/meminfo", "MemTotal: kB\nSwapFree"}}));
}

TEST(MemoryTexts, OfTheAddressSpaceTheUnusedPartIsAvailable) {
  EXPECT_EQ("8000 5000 3000 2000", figures({}, {3000, 1000}));
  EXPECT_EQ("8000 5000 3000 0", figures({}, {3000, 4000}));
  constexpr std::uint64_t kMore = std::uint64_t{512} << 20U;
  std::uint64_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  rlimit limit = {};
  getrlimit(RLIMIT_AS, &limit);
  const rlimit lower = {pages * vxOS::SysInfo::getPageSize() + kMore, limit.rlim_max};
  ASSERT_EQ(0, setrlimit(RLIMIT_AS, &lower));
  const std::uint64_t available = vxOS::SysInfo::getMemory().availableVirtual;
  setrlimit(RLIMIT_AS, &limit);
  EXPECT_LE(available, kMore / 1024);
  EXPECT_GT(available, kMore / 1024 / 2);
}
