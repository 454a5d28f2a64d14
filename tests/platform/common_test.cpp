// The platform's common library: the tokenizer the request channel relies
// on and the string hash the text-keyed tables rely on.
#include "platform/qxcommon.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <string>
#include <vector>

namespace {

std::vector<std::string> Fields(std::string text, const char* separators) {
  std::vector<std::string> out;
  for (char* f = _QXstrtok(text.data(), separators, 0); f != nullptr;
       f = _QXstrtok(nullptr, separators, 0)) {
    out.push_back(f);
  }
  return out;
}

TEST(StrtokTest, FieldsArePositional) {
  struct Case {
    std::string text;
    std::vector<std::string> fields;
  } cases[] = {
      {"a\vb\vc", {"a", "b", "c"}},
      {"name\v\v0\v1", {"name", "", "0", "1"}},  // an empty field between two tabs
      {"a\v", {"a", ""}},
      {"\v", {"", ""}},
      {"", {""}},
      {"query with spaces", {"query with spaces"}},
      {"1\v2\vpat tern\v", {"1", "2", "pat tern", ""}},
  };
  for (const Case& c : cases) EXPECT_EQ(Fields(c.text, "\v"), c.fields) << c.text;
}

TEST(StrtokTest, NullContinuesThePreviousText) {
  std::string text = "x y";
  EXPECT_STREQ(_QXstrtok(text.data(), " ", 0), "x");
  EXPECT_STREQ(_QXstrtok(nullptr, " ", 0), "y");
  EXPECT_EQ(_QXstrtok(nullptr, " ", 0), nullptr);
  EXPECT_EQ(_QXstrtok(nullptr, " ", 0), nullptr);
}

TEST(QXhashTest, SpreadsNetworkNodeKeysOverBuckets) {
  // Keys of the shape the network-node table uses, over 97 buckets.
  std::vector<int> buckets(97);
  std::set<unsigned int> distinct;
  int n = 0;
  for (int net = 1; net <= 100; ++net) {
    for (int node = 1; node <= 100; ++node, ++n) {
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

TEST(QXstrdupTest, CopiesAndKeepsNull) {
  char* copy = _QXstrdup("IP Internet");
  EXPECT_STREQ(copy, "IP Internet");
  std::free(copy);
  EXPECT_EQ(_QXstrdup(nullptr), nullptr);
}

}  // namespace
