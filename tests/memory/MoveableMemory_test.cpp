#include <gtest/gtest.h>

#include <kilnbase/memory/MoveableMemory.h>
#include <vx/Filename.h>

#include "tests/support/TemporaryFolder.h"

using vxKilnBase::MoveableMemory;
using vxString::CString;
using vxString::IString;

TEST(MoveableMemory, AStoreIsMadeInAFolderThatIsMadeToo) {
  const kilntest::TemporaryFolder folder;
  const IString path = CString((folder.path() / "new" / "store").string().c_str()).asWide();
  MoveableMemory memory = vxKilnBase::moveableMemory();
  EXPECT_EQ(nullptr, memory.get());
  EXPECT_EQ(0, memory.initialize(path, L"p").code());
  EXPECT_EQ(path, memory.getDirectory());
  const auto block = memory.get()->allocate(10);
  EXPECT_NE(nullptr, memory.get()->lock(block));

  MoveableMemory copy = memory;
  EXPECT_EQ(memory.get(), copy.get());
  EXPECT_EQ(path, copy.getDirectory());
  EXPECT_EQ(0, memory.initialize(path, L"p").code());
  EXPECT_NE(memory.get(), copy.get());
  EXPECT_EQ(10U, copy.get()->size(block));
  EXPECT_EQ(0U, memory.get()->size(block));
  copy = memory;
  EXPECT_EQ(memory.get(), copy.get());
}

TEST(MoveableMemory, WhatFailsIsAnError) {
  const kilntest::TemporaryFolder folder;
  const IString path = CString(folder.path().string().c_str()).asWide();
  MoveableMemory memory;
  const vxUtil::Error bad = memory.initialize(path, L"no/prefix");
  EXPECT_EQ(1, bad.code());
  EXPECT_EQ("Failed to initialize moveable memory.", bad.message());
  EXPECT_EQ(nullptr, memory.get());
  EXPECT_EQ(0, memory.initialize(path, L"p").code());
  const vxOS::MoveableMemory* store = memory.get();
  folder.write("file", "");
  EXPECT_EQ(bad.message(), MoveableMemory().initialize(path + L"/file", L"p").message());
  EXPECT_NE(0, memory.initialize(path + L"/file/below", L"p").code());
  EXPECT_EQ(path + L"/file/below", memory.getDirectory());
  EXPECT_EQ(store, memory.get());
  memory.initialize(path, L"no/prefix");
  EXPECT_EQ(nullptr, memory.get());
}
