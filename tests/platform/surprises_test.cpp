// The platform's surprising behaviours: lists served in a permuted order,
// deletions that cascade, empty and missing lists, partial id lists; each
// set by the environment at QXwInit or by a control command.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "platform/skcollection.h"
#include "tests/platform/platform_test.h"

namespace {

using skifftest::ControlOk;
using skifftest::Ids;
using skifftest::Of;
using SurprisesTest = skifftest::PlatformTest;

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

// Each list function against the order the `order` command reports: a list
// in full comes in that order, a filtered list or a query in that order too.
TEST_F(SurprisesTest, ListsComeInThePermutedOrderThatOrderReports) {
  QXwFieldValue yes = skifftest::Value(QXW_FIELD_BOOLEAN, 1);
  QXwFieldBinding isNode{Field("isNode"), &yes};
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
  QXwObjectIdList none{0, nullptr};
  QXwFieldValue nothing = skifftest::Value(QXW_FIELD_STRING, 0, "nothing");
  QXwFieldBinding serial{Field("Serial Number"), &nothing};
  struct Case {
    const char* call;
    std::function<Ids()> list;
    const char* answers;  // in usual, empty and null
  } cases[] = {
      {"symbols of an empty submap", [&] { return Of(QXwListSymbols(map(), 5, 7, nullptr)); },
       "LLN"},
      {"symbols of no submap", [&] { return Of(QXwListSymbols(map(), 99, 7, nullptr)); }, "NLN"},
      {"symbols of an object without", [&] { return Of(QXwGetSymbolsByObject(map(), 51)); }, "LLN"},
      {"symbols of no object", [&] { return Of(QXwGetSymbolsByObject(map(), 999)); }, "NLN"},
      {"values of an object without", [] { return Of(QXwDbGetFieldValues(70)); }, "LLN"},
      {"capabilities of one without", [] { return Of(QXwDbGetCapabilityFieldValues(50)); }, "LLN"},
      {"values of no object", [] { return Of(QXwDbGetFieldValues(999)); }, "NLN"},
      {"values of no objects",
       [&] { return Of(QXwDbGetFieldValuesByObjects(&none, serial.field_id)); }, "LLN"},
      {"a query that matches nothing", [&] { return Of(QXwDbListObjectsByFieldValue(&serial)); },
       "NLN"},
      {"a collection that matches nothing",
       [] { return Of(skCollectionEvaluate(R"(("Serial Number" = "nothing"))")); }, "NNN"},
  };
  ASSERT_EQ(skCollectionOpen(), 1);
  const char* settings[] = {"usual", "empty", "null"};
  for (int i = 0; i < 3; ++i) {
    ControlOk(std::string("lists ") + settings[i]);
    for (const Case& c : cases) {
      const Ids ids = c.list();
      EXPECT_EQ(ids == Ids{0} ? 'N'
                : ids.empty() ? 'L'
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
