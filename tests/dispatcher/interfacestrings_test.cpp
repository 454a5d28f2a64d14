// Interface strings: tokens 2, 3 and 4 of each, one line per interface.
#include "dispatcher/interfacestrings.h"

#include <gtest/gtest.h>

namespace {

TEST(InterfaceStringsTest, OneLinePerInterfaceWhateverItHolds) {
  const std::vector<std::string> two = {"1 le0  10.1.2.3   255.255.255.0 08:00:2b:01:02:03",
                                        "2 le1 10.1.9.9 255.255.0.0 08:00:2b:0a:0b:0c"};
  EXPECT_EQ(skiff::ConcatenateIndexedTokens(2, two), "10.1.2.3\n10.1.9.9");
  EXPECT_EQ(skiff::ConcatenateIndexedTokens(3, two), "255.255.255.0\n255.255.0.0");
  EXPECT_EQ(skiff::ConcatenateIndexedTokens(4, two), "08:00:2b:01:02:03\n08:00:2b:0a:0b:0c");
  // A string without the token keeps its line, empty.
  const std::vector<std::string> shortOne = {"1 le0 10.1.2.3", "", "3 le2 10.1.3.3 255.0.0.0 x"};
  EXPECT_EQ(skiff::ConcatenateIndexedTokens(3, shortOne), "\n\n255.0.0.0");
  EXPECT_EQ(skiff::ConcatenateIndexedTokens(2, {}), "");

  QXwListFieldEntry entries[2] = {};
  entries[0].string_val = const_cast<char*>("a b c");
  QXwListFieldValue list{2, entries};
  EXPECT_EQ(skiff::GetInterfaceStrings(&list), (std::vector<std::string>{"a b c", ""}));
  EXPECT_TRUE(skiff::GetInterfaceStrings(nullptr).empty());
}

}  // namespace
