// The object-collection service: the clause form the search builds, matched
// as text against every object that has the field.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/qxwdb.h"
#include "platform/skcollection.h"
#include "tests/support/platform_session.h"

namespace {

class CollectionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(session_.ok()) << session_.error();
    ASSERT_EQ(skCollectionOpen(), 1);
  }
  void TearDown() override { skCollectionDone(); }

  // The objects found, or {-1} when the service answered none, with the
  // error it set.
  std::vector<long> Evaluate(const std::string& clause, int* error = nullptr) {
    QXwObjectIdList* list = skCollectionEvaluate(clause.c_str());
    if (list == nullptr) {
      if (error != nullptr) *error = QXwError();
      return {-1};
    }
    std::vector<long> ids(list->object_ids, list->object_ids + list->count);
    QXwDbFreeObjectIdList(list);
    return ids;
  }

  skifftest::PlatformSession session_{skifftest::TestMap("platform.json")};
};

TEST_F(CollectionTest, ClausesMatchTextRegularExpressionsAndTypes) {
  struct Case {
    const char* clause;
    std::vector<long> ids;
  } cases[] = {
      // as a wildcard search writes them
      {R"(("IP Hostname" ~ "^.*$"))", {30, 31, 40}},
      {R"(("IP Address" ~ "^10.1..*$"))",
       {20, 30, 31, 40, 41, 42, 43}},  // the dot matches 10.11.5.1
      {R"(("Selection Name" ~ "^$"))", {50}},
      // an exact search never expands the star; a regular expression is not anchored
      {R"(("Selection Name" = "*"))", {51}},
      {R"(("Selection Name" = "rtr1"))", {30}},
      {R"(("Selection Name" ~ "rtr"))", {30, 31}},
      {R"(("Selection Name" ~ ":le[01]$"))", {41, 42, 43}},
      // integers as decimal text, booleans as TRUE/FALSE, enumerations by name
      {R"(("TopM Node ID" = "40"))", {41, 42}},
      {R"(("TopM Node ID" = "4294967295"))", {43}},
      {R"(("Rack" = "-1"))", {31}},
      {R"(("isInterface" = "TRUE"))", {41, 42, 43}},
      {R"(("isSNMPSupported" ~ "^TR"))", {40}},
      {R"(("vendor" = "Acme"))", {30}},
      {R"(("vendor" ~ "^Glo"))", {40}},
      // a list field matches when one of its elements does
      {R"(("Aliases" = "beta"))", {50}},
      // blanks around the parts are allowed
      {R"( ( "Selection Name"   =  "rtr2" ) )", {31}},
  };
  for (const Case& c : cases) EXPECT_EQ(Evaluate(c.clause), c.ids) << c.clause;
}

TEST_F(CollectionTest, NothingFoundAndInvalidExpressionsGiveNone) {
  struct Case {
    const char* clause;
    int error;
  } cases[] = {
      {R"(("Selection Name" = "rtr"))", QXW_ERR_NOT_FOUND},
      {R"(("isNode" = "FALSE"))", QXW_ERR_NOT_FOUND},
      {R"(("Selection Name" = "a"b"))", QXW_ERR_NOT_FOUND},  // a quote inside the value is text
      {R"(("Colour" = "red"))", QXW_ERR_NO_SUCH_FIELD},
      {R"(("Selection Name" ~ "("))", QXW_ERR_BAD_EXPRESSION},
      {R"(("Selection Name" = rtr1))", QXW_ERR_BAD_EXPRESSION},
      {R"("Selection Name" = "rtr1")", QXW_ERR_BAD_EXPRESSION},
      {R"(("Selection Name" == "rtr1"))", QXW_ERR_BAD_EXPRESSION},
      {R"(("Selection Name" = "rtr1") x)", QXW_ERR_BAD_EXPRESSION},
      {"", QXW_ERR_BAD_EXPRESSION},
  };
  for (const Case& c : cases) {
    int error = 0;
    EXPECT_EQ(Evaluate(c.clause, &error), std::vector<long>{-1}) << c.clause;
    EXPECT_EQ(error, c.error) << c.clause;
  }
}

TEST_F(CollectionTest, TheServiceMustBeOpen) {
  skCollectionDone();
  int error = 0;
  EXPECT_EQ(Evaluate(R"(("Selection Name" = "rtr1"))", &error), std::vector<long>{-1});
  EXPECT_EQ(error, QXW_ERR_NOT_OPEN);
  ASSERT_EQ(skCollectionOpen(), 1);
}

}  // namespace
