#include <gtest/gtest.h>

#include <vx/SysInfo.h>

using vxOS::MemoryFigures;
using vxOS::SysInfo;

TEST(SysInfo, FiguresOfTheSystemAgreeWithEachOther) {
  const std::size_t page = SysInfo::getPageSize();
  EXPECT_GE(page, 4096U);
  EXPECT_EQ(0U, page & (page - 1));
  const MemoryFigures memory = SysInfo::getMemory();
  EXPECT_GT(memory.totalPhysical, 64U * 1024);
  EXPECT_GT(memory.availablePhysical, 0U);
  EXPECT_LE(memory.availablePhysical, memory.totalPhysical);
  EXPECT_GT(memory.availableVirtual, 0U);
  EXPECT_LE(memory.availableVirtual, memory.totalVirtual);
}

TEST(SysInfo, AHostReplacesTheFiguresAndBringsThemBack) {
  const MemoryFigures system = SysInfo::getMemory();
  SysInfo::setMemorySource([] { return MemoryFigures{1, 2, 3, 4}; });
  EXPECT_EQ(1U, SysInfo::getMemory().totalPhysical);
  SysInfo::setMemorySource(nullptr);
  EXPECT_EQ(system.totalPhysical, SysInfo::getMemory().totalPhysical);
}
