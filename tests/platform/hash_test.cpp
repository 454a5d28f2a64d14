// The platform's keyed table: what the keyed-table family builds on.
#include "platform/qxhash.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "platform/qxcommon.h"

namespace {

// A table keyed by text, counting how often the table asks its virtual
// functions: the table must hash and compare only through them.
class TextTable : public _Hash {
 public:
  TextTable() : _Hash(50, 3, 3, 0.333f) {}
  unsigned int hash(uintptr_t key) override {
    ++hashes;
    return _QXhash(reinterpret_cast<const char*>(key));
  }
  int keyCmp(uintptr_t tabKey, uintptr_t searchKey) override {
    ++compares;
    return std::strcmp(reinterpret_cast<const char*>(tabKey),
                       reinterpret_cast<const char*>(searchKey));
  }
  int hashes = 0;
  int compares = 0;
};

uintptr_t Word(const std::string& s) { return reinterpret_cast<uintptr_t>(s.c_str()); }

std::map<uintptr_t, uintptr_t> Contents(_Hash& table) {
  std::map<uintptr_t, uintptr_t> seen;
  _HashIter it(table);
  for (_HashItem* item = it(); item != nullptr; item = ++it) {
    EXPECT_TRUE(seen.emplace(item->key(), item->data()).second) << "entry visited twice";
  }
  return seen;
}

TEST(HashTest, InsertOfPresentKeyReplacesTheValue) {
  _Hash table(50, 3, 3, 0.333f);
  table.insert(7, 70);
  table.insert(7, 71);
  EXPECT_EQ(table.size(), 1);
  ASSERT_NE(table.find(7), nullptr);
  EXPECT_EQ(table.find(7)->data(), 71u);
  EXPECT_EQ(table.find(7)->key(), 7u);
}

TEST(HashTest, GrowsAndKeepsEveryEntry) {
  _Hash table(50, 3, 3, 0.333f);
  // Far past the first growth (50 buckets at a load of 0.333).
  for (uintptr_t k = 1; k <= 5000; ++k) table.insert(k * 7919, k);
  EXPECT_EQ(table.size(), 5000);
  for (uintptr_t k = 1; k <= 5000; ++k) {
    ASSERT_TRUE(table.isIn(k * 7919));
    EXPECT_EQ(table.find(k * 7919)->data(), k);
  }
  EXPECT_FALSE(table.isIn(3));
  EXPECT_EQ(Contents(table).size(), 5000u);
}

TEST(HashTest, RemoveTakesOnlyThatEntry) {
  _Hash table(50, 3, 3, 0.333f);
  for (uintptr_t k = 0; k < 100; ++k) table.insert(k, k + 1);
  EXPECT_EQ(table.remove(40), 1);
  EXPECT_EQ(table.remove(40), 0);
  EXPECT_EQ(table.size(), 99);
  EXPECT_FALSE(table.isIn(40));
  EXPECT_TRUE(table.isIn(39));
  EXPECT_TRUE(table.isIn(41));
}

TEST(HashTest, IteratorVisitsEachEntryOnceAndMarksTheTable) {
  _Hash table(50, 3, 3, 0.333f);
  EXPECT_TRUE(Contents(table).empty());
  std::map<uintptr_t, uintptr_t> expected;
  for (uintptr_t k = 1; k <= 300; ++k) {
    table.insert(k, k * 2);
    expected[k] = k * 2;
  }
  {
    _HashIter it(table);
    EXPECT_EQ(table.isIterating(), 1);
  }
  EXPECT_EQ(table.isIterating(), 0);
  EXPECT_EQ(Contents(table), expected);
  // Past the end the iterator stays at its end.
  _HashIter it(table);
  while (it() != nullptr) ++it;
  EXPECT_EQ(++it, nullptr);
}

TEST(HashTest, OverridesDecideEqualityAndPlacementThroughGrowth) {
  TextTable table;
  std::vector<std::string> keys;
  for (int i = 0; i < 200; ++i) keys.push_back("key-" + std::to_string(i));
  for (size_t i = 0; i < keys.size(); ++i) table.insert(Word(keys[i]), i);
  // Equal text at another address is the same key.
  for (size_t i = 0; i < keys.size(); ++i) {
    std::string copy = keys[i];
    ASSERT_NE(table.find(Word(copy)), nullptr) << copy;
    EXPECT_EQ(table.find(Word(copy))->data(), i);
  }
  std::string again = "key-5";
  table.insert(Word(again), 999);
  EXPECT_EQ(table.size(), 200);
  std::string gone = "key-6";
  EXPECT_EQ(table.remove(Word(gone)), 1);
  EXPECT_FALSE(table.isIn(Word(gone)));
  EXPECT_GT(table.hashes, 0);
  EXPECT_GT(table.compares, 0);
}

}  // namespace
