// Map files: every violation is refused with a message naming the file, the
// entity and the problem; a valid map survives a dump and a reload intact.
// The model on its own: removing symbols relinks the ones placed after them.
#include "emulator/loader.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "emulator/model.h"
#include "platform/qxw.h"
#include "platform/qxwdb.h"
#include "tests/support/platform_session.h"

namespace {

using qxwemu::Json;

// Symbol 101 follows 100; 102 connects them.
Json BaseMap() {
  return Json::parse(R"({
    "map": {"name": "m", "permissions": 2, "rootSubmap": 1},
    "objects": [{"id": 10, "childSubmap": 2, "fields": {"Selection Name": "a"}},
                {"id": 11, "fields": {"Selection Name": "b"}}],
    "submaps": [{"id": 1, "name": "Root", "app": "IP Map"},
                {"id": 2, "name": "A", "app": "IP Map", "parentObject": 10}],
    "symbols": [{"id": 100, "submap": 1, "object": 10, "variety": 1, "plane": 2},
                {"id": 101, "submap": 1, "object": 11, "variety": 1, "plane": 2, "pred": 100},
                {"id": 102, "submap": 1, "object": 11, "variety": 2, "plane": 2,
                 "endpoint1": 100, "endpoint2": 101}]})");
}

std::unique_ptr<qxwemu::Map> Load(const std::string& text, std::string* error) {
  std::unique_ptr<qxwemu::Map> map = qxwemu::LoadMap(text, "map.json", error);
  EXPECT_EQ(map == nullptr, !error->empty());
  return map;
}

std::string LoadError(const std::string& text) {
  std::string error;
  return Load(text, &error) == nullptr ? error : "loaded";
}

TEST(LoaderTest, EveryViolationIsNamed) {
  EXPECT_EQ(LoadError(BaseMap().dump()), "loaded");
  struct Case {
    const char* path;   // in the base map
    const char* value;  // JSON put there; null: the key is removed
    std::string message;
  } cases[] = {
      {"/symbol", "[]", "\"symbol\": is not a map file key"},
      {"/map", nullptr, "map: the \"map\" section is missing"},
      {"/map/permissions", "3", "map: \"permissions\" must be 1 (read-only) or 2 (read-write)"},
      {"/map/rootSubmap", "9", "map: rootSubmap 9 does not exist"},
      {"/objects/0/id", nullptr,
       "object at position 1: \"id\" must be an integer from 1 to 4294967295"},
      {"/objects/1/id", "10", "object 10: id is used twice"},
      {"/objects/1/fields/Color", "\"red\"", "object 11: unknown field \"Color\""},
      {"/objects/1/fields/Selection Name", "5",
       "object 11: field \"Selection Name\" must be a string"},
      {"/objects/1/fields/TopM Node ID", "4294967296",
       "object 11: field \"TopM Node ID\" must be an integer from -2147483648 to 4294967295"},
      {"/objects/1/fields/vendor", "\"Nobody\"",
       "object 11: field \"vendor\" has no constant \"Nobody\""},
      {"/objects/1/fields/TopM Interface List", "\"x\"",
       "object 11: field \"TopM Interface List\" is a list and takes an array"},
      {"/objects/1/fields/IP Address", "[\"a\"]",
       "object 11: field \"IP Address\" is not a list field"},
      {"/objects/1/fields/Selection Name", "\"a\"",
       "object 11: selection name \"a\" is already used by object 10"},
      {"/objects/1/childSubmap", "2", "object 11: childSubmap 2 has parentObject 10"},
      {"/objects/1/childSubmap", "7", "object 11: childSubmap 7 does not exist"},
      {"/submaps/0/parentObject", "11", "submap 1: parentObject 11 has childSubmap 0"},
      {"/submaps/0/parentObject", "99", "submap 1: parentObject 99 does not exist"},
      {"/symbols/0/submap", "7", "symbol 100: submap 7 does not exist"},
      {"/symbols/0/object", "99", "symbol 100: object 99 does not exist"},
      {"/symbols/0/submap", nullptr, "symbol 100: \"submap\" is missing"},
      {"/symbols/0/variety", "3", "symbol 100: \"variety\" must be 1 (icon) or 2 (connection)"},
      {"/symbols/0/plane", "1", "symbol 100: \"plane\" must be 2 (application) or 4 (user)"},
      {"/symbols/2/endpoint2", "999", "symbol 102: endpoint 999 does not exist"},
      {"/symbols/2/submap", "2", "symbol 102: endpoint 100 lies on another submap"},
      {"/symbols/2/endpoint2", "102", "symbol 102: endpoint 102 is the connection itself"},
      {"/symbols/2/endpoint1", nullptr,
       "symbol 102: a connection needs \"endpoint1\" and \"endpoint2\""},
      {"/symbols/2/x", "1", "symbol 102: key \"x\" applies to icon symbols only"},
      {"/symbols/1/pred", "555", "symbol 101: pred 555 does not exist"},
      {"/symbols/1/submap", "2", "symbol 101: pred 100 lies on another submap"},
      {"/symbols/1/pred", "102", "symbol 101: pred 102 is a connection"},
      {"/symbols/0/pred", "101", "symbol 100: pred 101 makes a loop: 100 after 101 after 100"},
      {"/symbols/1/pred", "101", "symbol 101: pred 101 makes a loop: 101 after 101"},
      {"/symbols/0/colour", "1", "symbol 100: unknown key \"colour\""},
      {"/symbols/1/id", "100", "symbol 100: id is used twice"},
      {"/fields", R"([{"name": "X", "type": "float"}])",
       "field \"X\": \"type\" must be \"integer\", \"boolean\", \"string\" or \"enumeration\""},
      {"/fields",
       R"([{"id": 40, "name": "A", "type": "string"}, {"id": 40, "name": "B", "type": "string"}])",
       "field \"B\": id 40 is already used"},
      {"/fields", R"([{"name": "X", "type": "string", "capability": true}])",
       "field \"X\": a capability field must be a boolean that is not a list"},
      {"/standardFields", "\"yes\"", "standardFields: must be true or false"},
      {"/objects", "{}", "\"objects\": must be an array"},
  };
  for (const Case& c : cases) {
    Json map = BaseMap();
    Json::json_pointer at(c.path);
    if (c.value != nullptr) {
      map[at] = Json::parse(c.value);
    } else {
      map[at.parent_pointer()].erase(at.back());
    }
    EXPECT_EQ(LoadError(map.dump()), "map.json: " + c.message) << c.path;
  }
  EXPECT_EQ(LoadError("[1]"), "map.json: map file: must be a JSON object");
  EXPECT_EQ(LoadError(R"({"objects": [{"id": 1, "id": 2}]})"),
            "map.json: object at position 1: key \"id\" appears twice");
  EXPECT_EQ(LoadError("{\"map\": ").rfind("map.json: invalid JSON: parse error at line 1", 0), 0u);
  std::string error;
  EXPECT_EQ(qxwemu::LoadMapFile("/nonexistent/map.json", &error), nullptr);
  EXPECT_EQ(error, "/nonexistent/map.json: cannot be read");
}

TEST(LoaderTest, FieldsMayFollowTheObjectsThatUseThemAndTakeIdsAroundClaimedOnes) {
  std::string error;
  std::unique_ptr<qxwemu::Map> loaded = Load(R"({
    "objects": [{"id": 1, "fields": {"Serial Number": "SN-1", "Selection Name": "x"}}],
    "submaps": [{"id": 1}], "map": {"name": "late", "permissions": 1, "rootSubmap": 1},
    "fields": [{"name": "Selection Name", "type": "string"},
               {"name": "B", "type": "integer", "id": 1}, {"name": "Serial Number", "type": "string"}],
    "standardFields": false})",
                                             &error);
  ASSERT_NE(loaded, nullptr) << error;
  EXPECT_EQ(loaded->FieldByName("Selection Name")->id, 2u);
  EXPECT_EQ(loaded->FieldByName("B")->id, 1u);
  EXPECT_EQ(loaded->FieldByName("Serial Number")->id, 3u);
  EXPECT_EQ(loaded->FieldByName("TopM Network ID"), nullptr);
  EXPECT_EQ(loaded->FindObject(1)->Find(3)->scalar.text, "SN-1");
}

TEST(LoaderTest, DumpReloadsToTheSameMap) {
  std::string error;
  std::unique_ptr<qxwemu::Map> first = qxwemu::LoadDefaultMap(&error);
  ASSERT_NE(first, nullptr) << error;
  Json dumped = qxwemu::DumpMap(*first);
  std::unique_ptr<qxwemu::Map> second = Load(dumped.dump(), &error);
  ASSERT_NE(second, nullptr) << error;
  EXPECT_EQ(qxwemu::DumpMap(*second), dumped);
}

TEST(LoaderTest, AnInvalidMapServesNothing) {
  Json map = BaseMap();
  map["symbols"][0]["submap"] = 7;
  skifftest::PlatformSession session(map.dump());
  ASSERT_FALSE(session.ok());
  EXPECT_EQ(QXwError(), QXW_ERR_FAILED);
  EXPECT_NE(session.error().find(".json: symbol 100: submap 7 does not exist"), std::string::npos)
      << session.error();
  EXPECT_EQ(QXwGetMapInfo(), nullptr);
  EXPECT_LT(QXwProcessEvent(), 0);
  EXPECT_EQ(QXwDbFieldNameToFieldId("Selection Name"), 0u);
}

// Predecessors that loop are refused by map files and control commands, so
// only a fault could make them: removing symbols on such a loop still ends.
TEST(ModelTest, RemovingSymbolsOnAPredecessorLoopEnds) {
  struct Case {
    std::vector<QXwSymbolId> removed;
    std::map<QXwSymbolId, QXwSymbolId> predAfter;  // survivor -> its predecessor
  } cases[] = {
      // 1 finds no surviving symbol before it, only the removed loop.
      {{2, 3}, {{1, 0}, {4, 1}}},
      // 3's chain comes back to 3 itself: it follows nothing.
      {{2}, {{1, 3}, {3, 0}, {4, 1}}},
  };
  for (const Case& c : cases) {
    std::string error;
    std::unique_ptr<qxwemu::Map> map = Load(R"({
      "map": {"name": "m", "permissions": 2, "rootSubmap": 1},
      "objects": [{"id": 1}], "submaps": [{"id": 1}],
      "symbols": [{"id": 1, "submap": 1, "object": 1, "variety": 1, "plane": 2},
                  {"id": 2, "submap": 1, "object": 1, "variety": 1, "plane": 2},
                  {"id": 3, "submap": 1, "object": 1, "variety": 1, "plane": 2},
                  {"id": 4, "submap": 1, "object": 1, "variety": 1, "plane": 2}]})",
                                            &error);
    ASSERT_NE(map, nullptr) << error;
    // 1 after 2, 2 after 3 and 3 after 2 (a loop), 4 after 1.
    for (auto [id, pred] : {std::pair{1u, 2u}, {2u, 3u}, {3u, 2u}, {4u, 1u}}) {
      map->FindSymbol(id)->pred = pred;
    }
    map->Remove({map->SymbolsToRemove(c.removed), {}, {}});
    std::map<QXwSymbolId, QXwSymbolId> predAfter;
    for (const qxwemu::Symbol* s : map->SymbolsInOrder()) predAfter[s->id] = s->pred;
    EXPECT_EQ(predAfter, c.predAfter) << "removing " << c.removed.size() << " symbols";
  }
}

}  // namespace
