#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/TemporaryFolder.h"
#include "tools/vxcached/Journal.h"
#include "tools/vxcached/OwnFiles.h"

namespace {

using kilntest::TemporaryFolder;
using vxcached::CacheIndex;
using vxcached::Entry;
using vxcached::Journal;
using vxcached::kIndexName;
using namespace std::string_view_literals;
using vxOS::FileFacts;

// All files are there: the identity is the number in the name.
class AllThere : public vxcached::EntryStore {
 public:
  FileFacts query(const std::string& name) override {
    return {true, 1, -5, static_cast<std::uint64_t>(std::stoi(name))};
  }
  void remove(const std::string&) override {}
  bool saveEntry(const Entry&) override { return true; }
  void saveAccess(const Entry&) override {}
  void saveRemoval(const Entry&) override {}
};

Entry entry(int number, const std::string& key) {
  const auto identity = static_cast<std::uint64_t>(number);
  return {
      key, std::to_string(number), {true, 1, -5, identity}, number * std::int64_t{10}, identity};
}

// Keys and access times, in the order in which the entries go.
using Times = std::vector<std::pair<std::string, std::int64_t>>;

constexpr std::size_t kRemovalBytes = 4 + 8 + 1 + 8;

struct VxcachedJournal : testing::Test {
  VxcachedJournal() { EXPECT_EQ(directory.open(folder.path().string().c_str()).code(), 0); }

  // What a daemon finds; it can go on writing.
  Times read() {
    AllThere store;
    CacheIndex index(store);
    Journal journal;
    EXPECT_EQ(journal.open(directory, index).code(), 0);
    Times times;
    for (const auto& each : index.list()) times.emplace_back(each.entry.key, each.entry.accessTime);
    EXPECT_TRUE(journal.appendRemoval(entry(99, "")));
    return times;
  }
  std::string content() const { return kilntest::readFile(folder.path() / kIndexName); }

  TemporaryFolder folder;
  vxOS::Directory directory;
};

TEST_F(VxcachedJournal, SurvivesCutsAndChangesOfEveryByte) {
  std::vector<Times> states = {{}};
  std::vector<std::size_t> ends;
  {
    AllThere store;
    CacheIndex index(store);
    Journal journal;
    ASSERT_EQ(journal.open(directory, index).code(), 0);
    const auto happened = [&](bool isWritten, const Times& state) {
      EXPECT_TRUE(isWritten);
      ends.push_back(content().size());
      states.push_back(state);
    };
    ends.push_back(content().size());
    happened(journal.appendEntry(entry(1, "a")), {{"a", 10}});
    happened(journal.appendEntry(entry(2, std::string("b\0", 2))),
             {{"a", 10}, {std::string("b\0", 2), 20}});
    Entry accessed = entry(1, "a");
    accessed.accessTime = 77;
    happened(journal.appendAccess(accessed), {{std::string("b\0", 2), 20}, {"a", 77}});
    happened(journal.appendRemoval(entry(2, "")), {{"a", 77}});
    happened(journal.appendEntry(entry(3, "a")), {{"a", 30}});
  }
  const std::string whole = content();
  // Daemons of other versions read this.
  EXPECT_EQ(whole.substr(0, ends[1]),
            "vxcached index 1\n\x2F\0\0\0\xDC\x2D\xEE\x94\xBE\x0B\x16\x48"
            "E\1\0\0\0\0\0\0\0"
            "\x0A\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0\xFB\xFF\xFF\xFF\xFF\xFF\xFF\xFF"
            "\1\0\0\0\0\0\0\0\1\0\0\0"
            "1a"sv);
  const auto stateAt = [&](std::size_t bytes) {
    std::size_t state = 0;
    while (state + 1 < ends.size() && ends[state + 1] <= bytes) ++state;
    return state;
  };
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    folder.write(kIndexName, whole.substr(0, size));
    const std::size_t state = stateAt(size);
    EXPECT_EQ(read(), states[state]) << size;
    EXPECT_EQ(content().size(), ends[state] + kRemovalBytes) << size;  // the torn end is gone
    EXPECT_EQ(read(), states[state]) << size;
  }
  for (std::size_t at = 0; at < whole.size(); ++at) {
    std::string changed = whole;
    changed[at] = static_cast<char>(changed[at] ^ 0x41);
    folder.write(kIndexName, changed);
    EXPECT_EQ(read(), states[stateAt(at < ends[0] ? 0 : at)]) << at;
  }
}

// Somebody has copied or forged the file.
TEST_F(VxcachedJournal, EndsBeforeWhatNoDaemonWrites) {
  std::vector<Entry> forged(10, entry(2, "b"));
  const char* names[] = {"../2", "/2", "a\\2", ".", "..", "", "@index.dat"};
  for (std::size_t i = 0; i < std::size(names); ++i) forged[i].name = names[i];
  forged[7].key = "";
  forged[8].key = std::string(65537, 'k');
  forged[9].generation = 0;
  forged.push_back(entry(2, "b"));
  forged.back().generation = CacheIndex::kMostGeneration + 1;
  for (const Entry& each : forged) {
    folder.write(kIndexName, "");
    AllThere store;
    CacheIndex index(store);
    Journal journal;
    ASSERT_EQ(journal.open(directory, index).code(), 0);
    for (const Entry& written : {entry(1, "a"), each, entry(3, "c")})
      EXPECT_TRUE(journal.appendEntry(written));
    EXPECT_EQ(read(), (Times{{"a", 10}})) << each.name;
  }
  const std::string known = content();
  constexpr std::string_view kUnknownKind =
      "\x09\0\0\0\x26\x76\xE5\x2E\x5C\x13\x97\x73"
      "X\1\0\0\0\0\0\0\0"sv;
  folder.write(kIndexName, known + std::string(kUnknownKind));
  read();
  EXPECT_EQ(content().size(), known.size() + kRemovalBytes);
}

TEST_F(VxcachedJournal, WritesItselfAnewInTheOrderOfTheEntries) {
  AllThere store;
  CacheIndex index(store);
  {
    Journal writer;
    ASSERT_EQ(writer.open(directory, index).code(), 0);
    for (int i = 0; i < 10003; ++i) EXPECT_TRUE(writer.appendAccess(entry(1, "a")));
  }
  Journal journal;
  ASSERT_EQ(journal.open(directory, index).code(), 0);
  EXPECT_TRUE(journal.isWorthRewriting(1));
  EXPECT_FALSE(journal.isWorthRewriting(2));
  EXPECT_EQ(journal.rewrite({{entry(2, "b"), 0, true}, {entry(3, "c"), 1, false}}).code(), 0);
  EXPECT_FALSE(journal.isWorthRewriting(1));
  EXPECT_TRUE(journal.appendEntry(entry(1, "a")));
  EXPECT_EQ(read(), (Times{{"b", 20}, {"a", 10}}));
  EXPECT_EQ(folder.names(), "@index.dat ");
}

}  // namespace
