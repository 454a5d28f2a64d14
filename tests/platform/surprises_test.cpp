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
      // One entry per object asked for, none asked for: a list even so.
      {"values of no objects",
       [&] { return Of(QXwDbGetFieldValuesByObjects(&none, serial.field_id)); }, "LLL"},
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

std::vector<std::string> g_deleted;  // one line per deletion event: "code [ids]"

template <class List, class Item>
void Record(int code, const List* list, const Item* items, uint32_t Item::*id) {
  std::string line = std::to_string(code) + " [";
  for (int i = 0; i < list->count; ++i) line += (i ? " " : "") + std::to_string(items[i].*id);
  g_deleted.push_back(line + "]");
}
void OnSymbols(void*, int code, QXwMapInfo*, QXwSymbolList* l) {
  Record(code, l, l->symbols, &QXwSymbolInfo::symbol_id);
}
void OnSubmaps(void*, int code, QXwMapInfo*, QXwSubmapList* l) {
  Record(code, l, l->submaps, &QXwSubmapInfo::submap_id);
}
void OnObjects(void*, int code, QXwMapInfo*, QXwObjectList* l) {
  Record(code, l, l->objects, &QXwObjectInfo::object_id);
}

// With cascading on, a deletion takes what a real platform's would: an
// object whose last symbol goes, with its child submap and what is on that.
TEST_F(SurprisesTest, CascadingDeletionsTakeObjectsThatLoseTheirLastSymbol) {
  QXwAddCallback(QXW_EVENT_SYMBOLS_DELETED, nullptr, reinterpret_cast<QXwCallbackProc>(OnSymbols),
                 nullptr);
  QXwAddCallback(QXW_EVENT_SUBMAPS_DELETED, nullptr, reinterpret_cast<QXwCallbackProc>(OnSubmaps),
                 nullptr);
  QXwAddCallback(QXW_EVENT_OBJECTS_DELETED, nullptr, reinterpret_cast<QXwCallbackProc>(OnObjects),
                 nullptr);
  struct Case {
    const char* command;
    std::vector<std::string> events;
  } cases[] = {
      // 104 takes connection 107, the only symbol of 60; 40 keeps 105.
      {"delete-symbols 104", {"14 [104 107]", "15 [60]"}},
      // 40 goes with its child submap 4, whose symbols were all of 41 and 42.
      {"delete-symbols 104 105", {"14 [104 105 107 109 110]", "16 [4]", "15 [40 60 41 42]"}},
      {"platform 104 105", {"14 [104 105 107 109 110]", "16 [4]", "15 [40 60 41 42]"}},
      {"delete-objects 40", {"14 [104 105 109 110 107]", "16 [4]", "15 [40 41 42 60]"}},
      // 20's only symbol is on submap 2: everything below it goes; 10 stays.
      {"delete-submaps 2",
       {"14 [101 102 103 104 105 106 107 108 109 110]", "16 [2 3 4]",
        "15 [20 30 40 31 60 50 41 42]"}},
      {"cascade off", {}},
      {"delete-symbols 104 105", {"14 [104 105 107]"}},
  };
  const std::string path = skifftest::WriteTempFile(skifftest::TestMap("platform.json"));
  ControlOk("cascade on");
  for (const Case& c : cases) {
    SCOPED_TRACE(c.command);
    ControlOk("open-map " + path);
    skifftest::DeliverPending();
    g_deleted.clear();
    if (std::string(c.command) == "platform 104 105") {
      QXwSymbolId ids[] = {104, 105};
      QXwSymbolIdList list{2, ids};
      ASSERT_EQ(QXwDeleteSymbols(map(), &list), 0);
    } else {
      ControlOk(c.command);
    }
    skifftest::DeliverPending();
    EXPECT_EQ(g_deleted, c.events);
  }
  std::remove(path.c_str());
}

// The environment sets each behaviour when a session opens, and a value
// that means nothing fails QXwInit naming it.
TEST(SurprisesFromEnvironmentTest, SetAtInitOrRefused) {
  auto noEffect = [](QXwMapInfo*) {};
  struct Case {
    const char* variable;
    const char* value;
    const char* error;  // null: accepted, and then `check` shows the effect
    std::function<void(QXwMapInfo*)> check;
  } cases[] = {
      {"QXW_LIST_ORDER", "permuted:3", nullptr,
       [](QXwMapInfo*) {
         EXPECT_NE(Served("submap 3"), (Ids{103, 104, 105, 106, 107, 108}));
       }},
      {"QXW_CASCADE", "1", nullptr,
       [](QXwMapInfo*) {
         ControlOk("delete-symbols 110");  // the last symbol of object 42
         EXPECT_EQ(ControlOk("dump")["map"]["objects"].size(), 11u);
       }},
      {"QXW_LISTS", "null,partial", nullptr,
       [](QXwMapInfo* map) {
         EXPECT_EQ(QXwListSymbols(map, 5, QXW_PLANE_ALL, nullptr), nullptr);
         QXwSymbolId ids[] = {103, 999};
         QXwSymbolIdList list{2, ids};
         EXPECT_EQ(QXwSetSymbolsVisibility(map, &list, 1), -1);
         EXPECT_EQ(skifftest::DeliverPending(), 1);
       }},
      {"QXW_LIST_ORDER", "permuted",
       "QXW_LIST_ORDER=permuted: the list order is creation or permuted SEED", noEffect},
      {"QXW_CASCADE", "yes", "QXW_CASCADE=yes: cascading is on or off, not \"yes\"", noEffect},
      {"QXW_LISTS", "empty,null",
       "QXW_LISTS=empty,null: \"null\" contradicts or repeats an earlier word", noEffect},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.variable) + "=" + c.value);
    setenv(c.variable, c.value, 1);
    skifftest::PlatformSession session(skifftest::TestMap("platform.json"));
    unsetenv(c.variable);
    if (c.error != nullptr) {
      EXPECT_FALSE(session.ok());
      EXPECT_EQ(session.error(), c.error);
    } else {
      ASSERT_TRUE(session.ok()) << session.error();
      c.check(session.map());
    }
  }
}

}  // namespace
