// The platform's common library: the tokenizer the request channel relies on,
// the string hash and the keyed table the keyed-table family builds on.
#include "platform/qxcommon.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/qxhash.h"

namespace {

// The fuzz target checks the split on any input; these are its behaviours
// one by one: an empty field between two separators or after the last, a
// blank that is not a separator, an empty text.
TEST(CommonTest, StrtokFieldsArePositionalAndStrdupCopiesNone) {
  struct Case {
    std::string text;
    std::vector<std::string> fields;
  } cases[] = {
      {"name\v\vpat tern\v", {"name", "", "pat tern", ""}},
      {"\v", {"", ""}},
      {"", {""}},
  };
  for (Case& c : cases) {
    std::vector<std::string> fields;
    // A null text continues the previous one, and stays at its end.
    for (char* f = _QXstrtok(c.text.data(), "\v", 0); f != nullptr; f = _QXstrtok(nullptr, "\v", 0))
      fields.push_back(f);
    EXPECT_EQ(_QXstrtok(nullptr, "\v", 0), nullptr);
    EXPECT_EQ(fields, c.fields) << c.text;
  }
  EXPECT_EQ(_QXstrdup(nullptr), nullptr);  // a copy of text: every Java test makes some
}

TEST(CommonTest, HashSpreadsNetworkNodeKeysOverBuckets) {
  // Keys of the shape the network-node table uses, over 97 buckets.
  std::vector<int> buckets(97);
  std::set<unsigned int> distinct;
  const int n = 100 * 100;
  for (int net = 1; net <= 100; ++net) {
    for (int node = 1; node <= 100; ++node) {
      unsigned int h = _QXhash((std::to_string(net) + ":" + std::to_string(node)).c_str());
      distinct.insert(h);
      ++buckets[h % 97];
    }
  }
  EXPECT_EQ(distinct.size(), static_cast<size_t>(n));
  for (int count : buckets) {
    EXPECT_GT(count, n / 97 / 2);
    EXPECT_LT(count, n / 97 * 2);
  }
}

// The table's entries as its iterator visits them, each once.
std::map<unsigned long, unsigned long> Contents(_Hash& table) {
  std::map<unsigned long, unsigned long> seen;
  _HashIter it(table);
  EXPECT_EQ(table.isIterating(), 1);
  for (_HashItem* item = it(); item != nullptr; item = ++it) {
    EXPECT_TRUE(seen.emplace(item->key(), item->data()).second) << "entry visited twice";
  }
  EXPECT_EQ(++it, nullptr);  // past the end the iterator stays at its end
  return seen;
}

TEST(HashTest, KeepsEveryEntryThroughGrowthAndRemoval) {
  _Hash table(50, 3, 3, 0.333f);
  EXPECT_TRUE(Contents(table).empty());
  EXPECT_EQ(table.isIterating(), 0);
  std::map<unsigned long, unsigned long> expected;
  // Far past the first growth (50 buckets at a load of 0.333).
  for (unsigned long k = 1; k <= 5000; ++k) table.insert(k * 7919, expected[k * 7919] = k);
  table.insert(7919, 71);  // a present key: the value is replaced
  expected[7919] = 71;
  EXPECT_EQ(table.remove(40 * 7919), 1);
  EXPECT_EQ(table.remove(40 * 7919), 0);
  expected.erase(40 * 7919);
  EXPECT_EQ(table.size(), 4999);
  for (auto [key, data] : expected) ASSERT_EQ(table.find(key)->data(), data) << key;
  EXPECT_FALSE(table.isIn(3));
  EXPECT_FALSE(table.isIn(40 * 7919));
  EXPECT_EQ(Contents(table), expected);
}

// A table keyed by text: equal text at another address is the same key only
// if the table hashes and compares through its virtual functions. Finding,
// removing and growth through them are the keyed tables' tests' to check.
const char* Text(unsigned long key) { return reinterpret_cast<const char*>(key); }
struct TextTable : _Hash {
  TextTable() : _Hash(50, 3, 3, 0.333f) {}
  unsigned int hash(unsigned long key) override { return _QXhash(Text(key)); }
  int keyCmp(unsigned long a, unsigned long b) override { return std::strcmp(Text(a), Text(b)); }
};

TEST(HashTest, InsertingEqualTextAtAnotherAddressReplacesTheEntry) {
  TextTable table;
  std::string key = "key-5", copy = key;
  table.insert(reinterpret_cast<unsigned long>(key.c_str()), 5);
  table.insert(reinterpret_cast<unsigned long>(copy.c_str()), 999);
  EXPECT_EQ(table.size(), 1);
  EXPECT_EQ(table.find(reinterpret_cast<unsigned long>(key.c_str()))->data(), 999u);
}

}  // namespace
