// The platform's surprising behaviours: lists served in a permuted order,
// deletions that cascade, empty and missing lists, partial id lists; each
// set by the environment at QXwInit or by a control command.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "emulator/qxwemu.h"
#include "platform/qxw.h"
#include "platform/qxwdb.h"
#include "platform/skcollection.h"
#include "tests/support/platform_session.h"

namespace {

using skifftest::Control;
using skifftest::ControlOk;
using Ids = std::vector<uint32_t>;

// The ids of a list, which is freed; {0} for none.
Ids Of(QXwSymbolList* list) {
  if (list == nullptr) return {0};
  Ids ids;
  for (int i = 0; i < list->count; ++i) ids.push_back(list->symbols[i].symbol_id);
  QXwFreeSymbolList(list);
  return ids;
}
Ids Of(QXwObjectIdList* list) {
  if (list == nullptr) return {0};
  Ids ids(list->object_ids, list->object_ids + list->count);
  QXwDbFreeObjectIdList(list);
  return ids;
}
Ids Of(QXwFieldBindList* list) {
  if (list == nullptr) return {0};
  Ids ids;
  for (int i = 0; i < list->count; ++i) ids.push_back(list->fields[i].field_id);
  QXwDbFreeFieldBindList(list);
  return ids;
}
Ids Of(QXwFieldList* list) {
  if (list == nullptr) return {0};
  Ids ids;
  for (int i = 0; i < list->count; ++i) ids.push_back(list->field_list[i].field_id);
  QXwDbFreeFieldList(list);
  return ids;
}

// The order the `order` command reports for `what`.
Ids Served(const std::string& what) { return ControlOk("order " + what)["ids"].get<Ids>(); }

// `all` without the ids that `part` lacks.
Ids Within(const Ids& all, const Ids& part) {
  Ids out;
  for (uint32_t id : all) {
    if (std::find(part.begin(), part.end(), id) != part.end()) out.push_back(id);
  }
  return out;
}

QXwFieldValue True() {
  QXwFieldValue value{};
  value.field_type = QXW_FIELD_BOOLEAN;
  value.un.bool_val = 1;
  return value;
}

class SurprisesTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(session_.ok()) << session_.error(); }
  QXwMapInfo* map() { return session_.map(); }

  skifftest::PlatformSession session_{skifftest::TestMap("platform.json")};
};

// Each list function against the order the `order` command reports: a list
// in full comes in that order, a filtered list or a query in that order too.
TEST_F(SurprisesTest, ListsComeInThePermutedOrderThatOrderReports) {
  QXwFieldValue yes = True();
  QXwFieldBinding isNode{QXwDbFieldNameToFieldId("isNode"), &yes};
  QXwFieldBindList nodes{1, &isNode};
  struct Case {
    const char* what;
    std::function<Ids()> list;
    bool whole;  // the list holds every item that `order` reports
  } cases[] = {
      {"submap 3", [&] { return Of(QXwListSymbols(map(), 3, QXW_PLANE_ALL, nullptr)); }, true},
      {"submap 3", [&] { return Of(QXwListSymbols(map(), 3, QXW_PLANE_APPLICATION, "")); }, false},
      {"object 40", [&] { return Of(QXwGetSymbolsByObject(map(), 40)); }, true},
      {"fields 40", [] { return Of(QXwDbGetFieldValues(40)); }, true},
      {"fields 40", [] { return Of(QXwDbGetCapabilityFieldValues(40)); }, false},
      {"fields", [] { return Of(QXwDbListFields(0)); }, true},
      {"objects", [&] { return Of(QXwDbListObjectsByFieldValues(&nodes)); }, false},
      {"objects", [] { return Of(skCollectionEvaluate(R"(("IP Address" ~ "^10\.1"))")); }, false},
  };
  ASSERT_EQ(skCollectionOpen(), 1);
  for (const char* order : {"permuted 7", "permuted 8", "creation"}) {
    ControlOk(std::string("list-order ") + order);
    for (const Case& c : cases) {
      SCOPED_TRACE(std::string(order) + ": " + c.what);
      const Ids listed = c.list(), served = Served(c.what);
      ASSERT_GT(listed.size(), 1u);
      EXPECT_EQ(c.list(), listed) << "the same list twice";
      EXPECT_EQ(listed, c.whole ? served : Within(served, listed));
    }
  }
  skCollectionDone();
  EXPECT_EQ(Served("submap 3"), (Ids{103, 104, 105, 106, 107, 108}));
}

// As a platform with hashed storage: a list that changes keeps the order of
// the items that stay; another seed, or another list, has another order.
TEST_F(SurprisesTest, APermutedListKeepsItsOrderAsItGainsAndLosesItems) {
  const Ids created{103, 104, 105, 106, 107, 108};
  ControlOk("list-order permuted 7");
  const Ids before = Served("submap 3");
  EXPECT_NE(before, created);
  EXPECT_EQ(Within(before, created), Within(Served("submap 3"), created));
  ControlOk("delete-symbols 105");
  const Ids fewer = Served("submap 3");
  EXPECT_EQ(fewer, Within(before, Ids{103, 104, 106, 107, 108}));
  ControlOk(R"(create-symbol {"submap": 3, "object": 51, "variety": 1, "plane": 2})");
  EXPECT_EQ(Within(Served("submap 3"), fewer), fewer);
  const Ids objects = Served("objects");
  ControlOk("list-order permuted 8");
  EXPECT_NE(Served("objects"), objects);
  EXPECT_NE(Served("fields 30"), Within(Served("fields"), Served("fields 30")));
}

}  // namespace
