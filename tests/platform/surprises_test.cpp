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

// The count of a list, which is freed, or -1 for none.
template <class List, class Free>
int CountAndFree(List* list, Free free) {
  const int count = list == nullptr ? -1 : list->count;
  if (list != nullptr) free(list);
  return count;
}
int Count(QXwSymbolList* l) { return CountAndFree(l, QXwFreeSymbolList); }
int Count(QXwFieldBindList* l) { return CountAndFree(l, QXwDbFreeFieldBindList); }
int Count(QXwObjectFieldList* l) { return CountAndFree(l, QXwDbFreeObjectFieldList); }
int Count(QXwObjectIdList* l) { return CountAndFree(l, QXwDbFreeObjectIdList); }

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

// What each list function answers when it has nothing to list, in each of
// the lists settings usual, empty and null: "L" an empty list, "N" none.
TEST_F(SurprisesTest, NothingComesAsAnEmptyListOrNoneWhereThePlatformMayChooseEither) {
  const QXwFieldId serial = QXwDbFieldNameToFieldId("Serial Number");
  struct Case {
    const char* call;
    std::function<int()> count;  // the list's count, or -1 for none
    const char* answers;         // in usual, empty and null
  } cases[] = {
      {"symbols of an empty submap", [&] { return Count(QXwListSymbols(map(), 5, 7, nullptr)); },
       "LLN"},
      {"symbols of no submap", [&] { return Count(QXwListSymbols(map(), 99, 7, nullptr)); }, "NLN"},
      {"symbols of an object without", [&] { return Count(QXwGetSymbolsByObject(map(), 51)); },
       "LLN"},
      {"symbols of no object", [&] { return Count(QXwGetSymbolsByObject(map(), 999)); }, "NLN"},
      {"values of an object without", [] { return Count(QXwDbGetFieldValues(70)); }, "LLN"},
      {"capabilities of one without", [] { return Count(QXwDbGetCapabilityFieldValues(50)); },
       "LLN"},
      {"values of no object", [] { return Count(QXwDbGetFieldValues(999)); }, "NLN"},
      {"values of no objects",
       [&] {
         QXwObjectIdList none{0, nullptr};
         return Count(QXwDbGetFieldValuesByObjects(&none, serial));
       },
       "LLN"},
      {"a query that matches nothing",
       [&] {
         QXwFieldValue value{};
         value.field_type = QXW_FIELD_STRING;
         value.un.string_val = const_cast<char*>("nothing");
         QXwFieldBinding binding{serial, &value};
         return Count(QXwDbListObjectsByFieldValue(&binding));
       },
       "NLN"},
      {"a collection that matches nothing",
       [] { return Count(skCollectionEvaluate(R"(("Serial Number" = "nothing"))")); }, "NNN"},
  };
  ASSERT_EQ(skCollectionOpen(), 1);
  const char* settings[] = {"usual", "empty", "null"};
  for (int i = 0; i < 3; ++i) {
    ControlOk(std::string("lists ") + settings[i]);
    for (const Case& c : cases) {
      const int count = c.count();
      EXPECT_EQ(count < 0    ? 'N'
                : count == 0 ? 'L'
                             : '?',
                c.answers[i])
          << settings[i] << ": " << c.call;
    }
  }
  skCollectionDone();
}

// An id list that names an unknown id: refused whole, or applied to the ids
// that exist; the call fails either way.
TEST_F(SurprisesTest, APartialIdListAppliesToTheIdsThatExist) {
  QXwSymbolId symbols[] = {103, 999};
  QXwObjectId objects[] = {31, 999};
  QXwSymbolIdList symbolList{2, symbols};
  QXwObjectIdList objectList{2, objects};
  auto dumped = [](const char* kind, uint32_t id) {
    const nlohmann::json map = ControlOk("dump")["map"];
    for (const nlohmann::json& item : map[kind]) {
      if (item["id"] == id) return item;
    }
    return nlohmann::json();
  };
  struct Case {
    const char* call;
    std::function<int()> run;
    const char* error;
    std::function<bool()> applied;
  } cases[] = {
      {"hide", [&] { return QXwSetSymbolsVisibility(map(), &symbolList, 1); },
       "no such symbol: 999", [&] { return dumped("symbols", 103).value("hidden", false); }},
      {"acknowledge", [&] { return QXwSetObjectAckState(map(), &objectList, 1); },
       "no such object: 999", [&] { return dumped("objects", 31).value("acknowledged", false); }},
      {"unmanage", [&] { return _QXwUnmanageObjects(map(), &objectList); }, "no such object: 999",
       [&] { return !dumped("objects", 31).value("managed", true); }},
      {"delete", [&] { return QXwDeleteSymbols(map(), &symbolList); }, "no such symbol: 999",
       [&] { return dumped("symbols", 103).is_null(); }},
  };
  for (bool partial : {false, true}) {
    ControlOk(partial ? "lists partial" : "lists whole");
    for (const Case& c : cases) {
      EXPECT_EQ(c.run(), -1) << c.call;
      EXPECT_STREQ(QXwErrorMsg(QXwError()), c.error) << c.call;
      EXPECT_EQ(c.applied(), partial) << c.call;
    }
    EXPECT_EQ(skifftest::DeliverPending(), partial ? 3 : 0) << "hidden, status, deleted";
  }
}

}  // namespace
