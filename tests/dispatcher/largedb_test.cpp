// The large-database setting: the matching rule over files, and the reread.
// A missing file, and the verbose lines, are the Java large-database test's.
#include "dispatcher/largedb.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "tests/support/platform_session.h"

namespace {

TEST(LargeDbTest, TheKeySwitchesTheSettingOnOnlyWhereAPieceStarts) {
  struct Case {
    const char* text;
    bool on;
  } cases[] = {
      {"SKIFF_LARGE_DB=TRUE", true},
      {"SKIFF_LARGE_DB=TRUE\n", true},
      {"SKIFF_LARGE_DB=TRUE and more on the line\n", true},
      {"# large map\nSKIFF_LARGE_DB=TRUE\n", true},
      {"0123456789ABCDEFGHISKIFF_LARGE_DB=TRUE\n", true},     // after one whole piece of other text
      {"SKIFF_LARGE_DB=TRUE\nSKIFF_LARGE_DB=FALSE\n", true},  // nothing switches it off again
      {" SKIFF_LARGE_DB=TRUE\n", false},
      {"skiff_large_db=true\n", false},
      {"SKIFF_LARGE_DB=FALSE\n", false},
      {"SKIFF_LARGE_DB=TRU\n", false},
      {"x SKIFF_LARGE_DB=TRUE\n", false},
      {"", false},
  };
  for (const Case& c : cases) {
    std::string path = skifftest::WriteTempFile(c.text, ".conf");
    std::FILE* file = std::fopen(path.c_str(), "r");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(skiff::LargeDbKeyFound(file), c.on) << c.text;
    std::fclose(file);
    skiff::RereadLargeDbSetting(path.c_str(), false);
    EXPECT_STREQ(skiff::LargeDbSetting(), c.on ? "TRUE" : "FALSE") << c.text;
    std::remove(path.c_str());
  }
}

}  // namespace
