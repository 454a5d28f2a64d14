// The object database: field descriptions, values and queries by value, and
// the object-collection service matching the search's clauses as text.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "platform/skcollection.h"
#include "tests/platform/platform_test.h"

namespace {

using skifftest::Ids;
using skifftest::Of;
using skifftest::Value;
using DbTest = skifftest::PlatformTest;

TEST_F(DbTest, NamesAndIdsResolve) {
  EXPECT_EQ(Field("Serial Number"), 26u);  // after the 25 standard fields
  EXPECT_EQ(Field("No Such Field"), 0u);
  EXPECT_EQ(QXwDbSelectionNameToObjectId("rtr1"), 30u);
  EXPECT_EQ(QXwDbSelectionNameToObjectId("nobody"), 0u);
  char* name = QXwDbObjectIdToSelectionName(42);
  EXPECT_STREQ(name, "host1:le1");
  std::free(name);
  EXPECT_EQ(QXwDbObjectIdToSelectionName(70), nullptr);  // has no selection name
  EXPECT_EQ(QXwDbObjectIdToSelectionName(999), nullptr);
}

TEST_F(DbTest, ValuesByObjectsKeepOnePlacePerObject) {
  QXwObjectId ids[] = {41, 999, 42, 43, 50};
  QXwObjectIdList list{5, ids};
  QXwObjectFieldList* nodes = QXwDbGetFieldValuesByObjects(&list, Field("TopM Node ID"));
  ASSERT_NE(nodes, nullptr);
  std::vector<std::string> values;  // "object=value", or the object alone for no value
  for (int i = 0; i < nodes->count; ++i) {
    const QXwFieldValue* v = nodes->objects[i].field_value;
    values.push_back(std::to_string(nodes->objects[i].object_id) +
                     (v != nullptr ? "=" + std::to_string(v->un.int_val) : ""));
  }
  // 999 does not exist, 43 holds 4294967295, 50 has no value.
  EXPECT_EQ(values, (std::vector<std::string>{"41=40", "999", "42=40", "43=-1", "50"}));
  QXwDbFreeObjectFieldList(nodes);
  EXPECT_EQ(QXwDbGetFieldValuesByObjects(&list, 999), nullptr);
}

TEST_F(DbTest, IntegerValuesReadAndWrite) {
  EXPECT_EQ(QXwDbGetFieldIntegerValue(41, Field("TopM Node ID")), 40);
  EXPECT_EQ(QXwDbGetFieldIntegerValue(31, Field("Rack")), -1);
  EXPECT_EQ(QXwDbGetFieldIntegerValue(30, Field("Location ID")), -1);  // not set
  EXPECT_EQ(QXwError(), QXW_ERR_NO_VALUE);
  EXPECT_EQ(QXwDbGetFieldIntegerValue(30, Field("Selection Name")), -1);
  EXPECT_EQ(QXwError(), QXW_ERR_WRONG_TYPE);
  ASSERT_EQ(QXwDbSetFieldIntegerValue(30, Field("Location ID"), 20), 0);
  EXPECT_EQ(QXwDbGetFieldIntegerValue(30, Field("Location ID")), 20);
  EXPECT_NE(QXwDbSetFieldIntegerValue(30, Field("IP Address"), 1), 0);
  EXPECT_NE(QXwDbSetFieldIntegerValue(999, Field("Location ID"), 1), 0);
  // A written value is found by value at once.
  QXwFieldValue twenty = Value(QXW_FIELD_INTEGER, 20);
  QXwFieldBinding binding{Field("Location ID"), &twenty};
  EXPECT_EQ(Of(QXwDbListObjectsByFieldValue(&binding)), Ids{30});
}

TEST_F(DbTest, ObjectsByValueMatchEveryBindingInCreationOrder) {
  QXwFieldValue yes = Value(QXW_FIELD_BOOLEAN, 1), allBits = Value(QXW_FIELD_INTEGER, -1),
                address = Value(QXW_FIELD_STRING, 0, "10.1.0.21"),
                alias = Value(QXW_FIELD_STRING, 0, "beta");
  struct Case {
    const char* what;
    std::vector<QXwFieldBinding> bindings;
    Ids ids;
  } cases[] = {
      {"capability", {{Field("isInterface"), &yes}}, {41, 42, 43}},
      {"address of an interface",
       {{Field("IP Address"), &address}, {Field("isInterface"), &yes}},
       {42}},
      {"all bits set", {{Field("TopM Node ID"), &allBits}}, {43}},
      {"an element of a list field", {{Field("Aliases"), &alias}}, {50}},
      {"no match", {{Field("isLocation"), &yes}}, {0}},
  };
  for (const Case& c : cases) {
    QXwFieldBindList list{static_cast<int>(c.bindings.size()),
                          const_cast<QXwFieldBinding*>(c.bindings.data())};
    EXPECT_EQ(Of(QXwDbListObjectsByFieldValues(&list)), c.ids) << c.what;
  }
  QXwFieldBinding unknown{999, &yes};
  EXPECT_EQ(QXwDbListObjectsByFieldValue(&unknown), nullptr);
  EXPECT_EQ(QXwError(), QXW_ERR_NO_SUCH_FIELD);
}

TEST_F(DbTest, CollectionClausesMatchTextRegularExpressionsAndTypes) {
  struct Case {
    const char* clause;
    Ids ids;  // {0}: none, with `error`
    int error = 0;
  } cases[] = {
      // as a wildcard search writes them: only objects that have the field
      {R"(("IP Hostname" ~ "^.*$"))", {30, 31, 40}},
      {R"(("Selection Name" ~ "^$"))", {50}},
      // an exact search never expands the star; a regular expression is not anchored
      {R"(("Selection Name" = "*"))", {51}},
      {R"(("Selection Name" ~ "rtr"))", {30, 31}},
      {R"(("Selection Name" = "rtr"))", {0}, QXW_ERR_NOT_FOUND},
      // integers as decimal text, booleans as TRUE/FALSE, enumerations by name
      {R"(("TopM Node ID" = "40"))", {41, 42}},
      {R"(("TopM Node ID" = "4294967295"))", {43}},
      {R"(("Rack" = "-1"))", {31}},
      {R"(("isInterface" = "TRUE"))", {41, 42, 43}},
      {R"(("isNode" = "FALSE"))", {0}, QXW_ERR_NOT_FOUND},
      {R"(("isSNMPSupported" ~ "^TR"))", {40}},
      {R"(("vendor" ~ "^Glo"))", {40}},
      // a list field matches when one of its elements does
      {R"(("Aliases" = "beta"))", {50}},
      // blanks around the parts are allowed; a quote inside the value is text
      {R"( ( "Selection Name"   =  "rtr2" ) )", {31}},
      {R"(("Selection Name" = "a"b"))", {0}, QXW_ERR_NOT_FOUND},
      {R"(("Colour" = "red"))", {0}, QXW_ERR_NO_SUCH_FIELD},
      {R"(("Selection Name" ~ "("))", {0}, QXW_ERR_BAD_EXPRESSION},
      {R"(("Selection Name" = rtr1))", {0}, QXW_ERR_BAD_EXPRESSION},
      {R"("Selection Name" = "rtr1")", {0}, QXW_ERR_BAD_EXPRESSION},
      {R"(("Selection Name" == "rtr1"))", {0}, QXW_ERR_BAD_EXPRESSION},
      {R"(("Selection Name" = "rtr1") x)", {0}, QXW_ERR_BAD_EXPRESSION},
      {"", {0}, QXW_ERR_BAD_EXPRESSION},
  };
  ASSERT_EQ(skCollectionOpen(), 1);
  for (const Case& c : cases) {
    const Ids ids = Of(skCollectionEvaluate(c.clause));
    EXPECT_EQ(ids, c.ids) << c.clause;
    EXPECT_EQ(ids == Ids{0} ? QXwError() : 0, c.error) << c.clause;
  }
  skCollectionDone();
  EXPECT_EQ(Of(skCollectionEvaluate(R"(("Selection Name" = "rtr2"))")), Ids{0});
  EXPECT_EQ(QXwError(), QXW_ERR_NOT_OPEN);
}

}  // namespace
