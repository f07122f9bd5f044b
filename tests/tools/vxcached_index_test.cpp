#include <algorithm>
#include <gtest/gtest.h>
#include <list>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tools/vxcached/CacheIndex.h"

namespace {

using vxcached::CacheIndex;
using vxcached::Entry;
using vxOS::FileFacts;

// A directory in memory, and what a killed daemon leaves there.
class MemoryStore : public vxcached::EntryStore {
 public:
  FileFacts query(const std::string& name) override {
    const auto file = files.find(name);
    return file == files.end() ? FileFacts() : file->second;
  }
  void remove(const std::string& name) override { EXPECT_EQ(files.erase(name), 1U) << name; }
  bool saveEntry(const Entry& entry) override {
    if (isFull) return false;
    std::erase_if(saved, [&](const auto& each) { return each.second.key == entry.key; });
    saved[entry.generation] = entry;
    return true;
  }
  void saveAccess(const Entry& entry) override {
    saved.at(entry.generation).accessTime = entry.accessTime;
  }
  void saveRemoval(const Entry& entry) override { saved.erase(entry.generation); }

  void write(const std::string& name, std::uint64_t size) {
    files[name] = {true, size, 0, ++lastIdentity};
  }

  std::map<std::string, FileFacts> files;
  std::map<std::uint64_t, Entry> saved;
  std::uint64_t lastIdentity = 0;
  bool isFull = false;
};

// What the cache promises, by the simplest means: generations in the order of their last access.
class Model {
 public:
  struct Generation {
    std::string key, name;
    std::uint64_t size;
    bool isCurrent = true;
    std::vector<std::size_t> holders = {};  // one for each hold
  };

  const Generation* acquire(std::size_t client, const std::string& key) {
    const auto found = current(key);
    if (found == all.end()) return nullptr;
    all.splice(all.end(), all, found);
    all.back().holders.push_back(client);
    return &all.back();
  }
  void add(std::size_t client, const std::string& key, const std::string& name,
           std::uint64_t size) {
    if (const auto older = current(key); older != all.end()) older->isCurrent = false;
    all.push_back({key, name, size, true, {client}});
    settle();
  }
  bool release(std::size_t client, const std::string& key, bool remove) {
    // Of several generations the client holds the one first that was added first.
    auto oldest = all.end();
    for (auto it = all.begin(); it != all.end(); ++it) {
      const bool isHeld = std::ranges::count(it->holders, client) > 0 && it->key == key;
      if (isHeld && (oldest == all.end() || it->name < oldest->name)) oldest = it;
    }
    if (oldest == all.end()) return false;
    oldest->holders.erase(std::ranges::find(oldest->holders, client));
    if (remove) oldest->isCurrent = false;
    settle();
    return true;
  }
  void releaseAll(std::size_t client) {
    for (Generation& each : all) std::erase(each.holders, client);
    settle();
  }
  void setAccessed(const std::string& key) {
    if (const auto found = current(key); found != all.end()) all.splice(all.end(), all, found);
  }
  void restart() {
    std::erase_if(all, [](const Generation& each) { return !each.isCurrent; });
    for (Generation& each : all) each.holders.clear();
    settle();
  }
  std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const Generation& each : all) found.push_back(each.name);
    std::ranges::sort(found);
    return found;
  }

  std::size_t mostFiles = 0;
  std::uint64_t mostBytes = 0;
  std::list<Generation> all;

 private:
  std::list<Generation>::iterator current(const std::string& key) {
    return std::ranges::find_if(
        all, [&](const Generation& each) { return each.isCurrent && each.key == key; });
  }
  void settle() {
    std::erase_if(all, [](const Generation& e) { return !e.isCurrent && e.holders.empty(); });
    const auto bytes = [this] {
      std::uint64_t sum = 0;
      for (const Generation& each : all) sum += each.size;
      return sum;
    };
    const auto idle = [](const Generation& each) { return each.holders.empty(); };
    while ((mostFiles > 0 && all.size() > mostFiles) || (mostBytes > 0 && bytes() > mostBytes)) {
      const auto oldest = std::ranges::find_if(all, idle);
      if (oldest == all.end()) break;
      all.erase(oldest);
    }
  }
};

std::vector<std::string> namesOf(const MemoryStore& store) {
  std::vector<std::string> found;
  for (const auto& [name, facts] : store.files) found.push_back(name);
  return found;
}

class RandomCache {
 public:
  explicit RandomCache(unsigned seed) : random_(seed) {
    index_->setLimits({5, 900});
    model_.mostFiles = 5;
    model_.mostBytes = 900;
  }

  void step() {
    const std::size_t client = pick(kClients);
    const std::string key(1, static_cast<char>('a' + pick(6)));
    switch (pick(12)) {
      case 0:
      case 1:
      case 2:
        add(client, key);
        break;
      case 3:
      case 4:
      case 5:
        acquire(client, key);
        break;
      case 6:
        index_->setAccessed(key, 7);
        model_.setAccessed(key);
        break;
      case 7:
        index_->releaseAll(clients_[client]);
        model_.releaseAll(client);
        break;
      case 8:
        if (pick(8) == 0) restart();
        break;
      default:
        release(client, key);
    }
    EXPECT_EQ(namesOf(store_), model_.names());
    EXPECT_EQ(index_->size(), model_.all.size());
  }

 private:
  static constexpr std::size_t kClients = 3;

  std::size_t pick(std::size_t count) { return random_() % count; }
  void add(std::size_t client, const std::string& key) {
    const std::string name = std::to_string(1'000'000 + ++lastName_);
    const std::uint64_t size = 50 + pick(300);
    store_.write(name, size);
    EXPECT_TRUE(index_->add(clients_[client], key, name, 5));
    model_.add(client, key, name, size);
  }
  void acquire(std::size_t client, const std::string& key) {
    const Entry* found = index_->acquire(clients_[client], key);
    const Model::Generation* expected = model_.acquire(client, key);
    EXPECT_EQ(found ? found->name : "", expected ? expected->name : "");
  }
  void release(std::size_t client, const std::string& key) {
    const bool removes = pick(4) == 0;
    EXPECT_EQ(index_->release(clients_[client], key, removes),
              model_.release(client, key, removes));
  }
  // The next daemon clears the files away that no entry names.
  void restart() {
    for (auto& client : clients_) client = {};
    index_ = std::make_unique<CacheIndex>(store_);
    std::vector<Entry> ordered;
    for (const Model::Generation& each : model_.all) {
      for (const auto& [generation, entry] : store_.saved) {
        if (entry.name == each.name) ordered.push_back(entry);
      }
    }
    for (const Entry& entry : ordered) index_->restoreEntry(entry);
    index_->finishRestore();
    index_->setLimits({5, 900});
    model_.restart();
    const std::vector<std::string> kept = model_.names();
    std::erase_if(store_.files,
                  [&](const auto& file) { return std::ranges::count(kept, file.first) == 0; });
  }

  std::mt19937 random_;
  MemoryStore store_;
  std::unique_ptr<CacheIndex> index_ = std::make_unique<CacheIndex>(store_);
  std::vector<CacheIndex::Client> clients_{kClients};
  Model model_;
  std::size_t lastName_ = 0;
};

TEST(VxcachedIndex, DoesWhatASimpleModelDoes) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    RandomCache cache(seed);
    for (int i = 0; i < 1000 && !testing::Test::HasFailure(); ++i) cache.step();
  }
}

struct IndexTest : testing::Test {
  bool add(const std::string& key, const std::string& name) {
    return index.add(client, key, name, 5);
  }
  bool has(const std::string& key) {
    const bool isThere = index.acquire(other, key) != nullptr;
    index.releaseAll(other);
    return isThere;
  }

  MemoryStore store;
  CacheIndex index{store};
  CacheIndex::Client client, other;
};

TEST_F(IndexTest, TakesOneFileForOneKey) {
  store.write("x", 1);
  store.files["link"] = {false, 1, 0, 99};
  EXPECT_TRUE(add("a", "x"));
  EXPECT_FALSE(add("b", "x"));
  EXPECT_FALSE(add("b", "link"));
  EXPECT_FALSE(add("b", "missing"));
  EXPECT_FALSE(add("", "x"));
  store.write("y", 1);
  store.isFull = true;
  EXPECT_FALSE(add("a", "y"));
  EXPECT_TRUE(has("a"));
  index.setAccessed("a", 9);
  EXPECT_EQ(store.saved.at(1).accessTime, 9);
  store.isFull = false;
  // A removed file that somebody still holds belongs to nobody else.
  index.release(client, "a", true);
  EXPECT_FALSE(add("b", "x"));
  index.releaseAll(client);
  EXPECT_EQ(namesOf(store), (std::vector<std::string>{"link", "y"}));
}

TEST_F(IndexTest, AFileAddedAgainBelongsToTheNewerGeneration) {
  index.setLimits({1, 10});
  store.write("x", 6);
  EXPECT_TRUE(add("a", "x"));
  EXPECT_TRUE(add("a", "x"));
  EXPECT_EQ(index.bytes(), 6U);
  EXPECT_TRUE(index.release(client, "a", true));  // the older one
  EXPECT_TRUE(has("a"));
  EXPECT_TRUE(index.release(client, "a", false));
  EXPECT_TRUE(has("a"));

  EXPECT_NE(index.acquire(client, "a"), nullptr);
  EXPECT_NE(index.acquire(other, "a"), nullptr);
  EXPECT_EQ(index.list().front().holders, 2U);
  EXPECT_TRUE(index.release(client, "a", true));
  EXPECT_FALSE(index.acquire(client, "a"));
  EXPECT_TRUE(add("a", "x"));  // not deleted yet, as `other` holds it
  EXPECT_TRUE(index.release(other, "a", true));
  EXPECT_TRUE(has("a"));
  EXPECT_TRUE(index.release(client, "a", true));
  EXPECT_EQ(namesOf(store), std::vector<std::string>{});
  EXPECT_EQ(index.bytes(), 0U);
}

TEST_F(IndexTest, AChangedFileIsNotThereAndStays) {
  for (const char* key : {"gone", "changed", "replaced", "renamed"}) {
    store.write(key, 1);
    EXPECT_TRUE(add(key, key));
  }
  index.releaseAll(client);
  store.files.erase("gone");
  store.files["changed"].modified = 1;
  store.write("replaced", 1);
  store.files["elsewhere"] = store.files["renamed"];
  store.files.erase("renamed");
  EXPECT_TRUE(add("other", "replaced"));
  EXPECT_TRUE(add("renamed", "elsewhere"));
  EXPECT_FALSE(has("gone"));
  EXPECT_FALSE(has("changed"));
  EXPECT_FALSE(has("replaced"));
  EXPECT_EQ(namesOf(store), (std::vector<std::string>{"changed", "elsewhere", "replaced"}));
  EXPECT_EQ(index.size(), 2U);
}

TEST_F(IndexTest, WhatIsMissingTakesNoRoom) {
  for (const char* key : {"a", "b", "c"}) {
    store.write(key, 10);
    EXPECT_TRUE(add(key, key));
  }
  index.releaseAll(client);
  index.setLimits({3, 30});
  store.files.erase("c");
  store.write("d", 10);
  EXPECT_TRUE(add("d", "d"));
  EXPECT_EQ(namesOf(store), (std::vector<std::string>{"a", "b", "d"}));
  EXPECT_TRUE(has("a"));
  // A file that its holder has changed goes when he says so.
  store.files["d"].size = 20;
  EXPECT_TRUE(index.release(client, "d", true));
  EXPECT_EQ(namesOf(store), (std::vector<std::string>{"a", "b"}));
}

}  // namespace
