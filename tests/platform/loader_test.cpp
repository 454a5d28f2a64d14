// Map files: every violation is refused with a message naming the file, the
// entity and the problem; a valid map survives a dump and a reload intact.
#include "emulator/loader.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "platform/qxw.h"
#include "platform/qxwdb.h"
#include "tests/support/platform_session.h"

namespace {

using qxwemu::Json;

Json BaseMap() {
  return Json::parse(R"({
    "map": {"name": "m", "permissions": 2, "rootSubmap": 1},
    "objects": [{"id": 10, "childSubmap": 2, "fields": {"Selection Name": "a"}},
                {"id": 11, "fields": {"Selection Name": "b"}}],
    "submaps": [{"id": 1, "name": "Root", "app": "IP Map"},
                {"id": 2, "name": "A", "app": "IP Map", "parentObject": 10}],
    "symbols": [{"id": 100, "submap": 1, "object": 10, "variety": 1, "plane": 2},
                {"id": 101, "submap": 1, "object": 11, "variety": 1, "plane": 2},
                {"id": 102, "submap": 1, "object": 11, "variety": 2, "plane": 2,
                 "endpoint1": 100, "endpoint2": 101}]})");
}

std::string LoadError(const std::string& text) {
  std::string error;
  std::unique_ptr<qxwemu::Map> map = qxwemu::LoadMap(text, "map.json", &error);
  EXPECT_EQ(map == nullptr, !error.empty());
  return map == nullptr ? error : "loaded";
}

TEST(LoaderTest, BaseMapLoads) { EXPECT_EQ(LoadError(BaseMap().dump()), "loaded"); }

TEST(LoaderTest, EveryViolationIsNamed) {
  struct Case {
    const char* what;
    std::function<void(Json&)> change;
    std::string message;
  } cases[] = {
      {"unknown top-level key", [](Json& m) { m["symbol"] = Json::array(); },
       "\"symbol\": is not a map file key"},
      {"no map section", [](Json& m) { m.erase("map"); }, "map: the \"map\" section is missing"},
      {"bad permissions", [](Json& m) { m["map"]["permissions"] = 3; },
       "map: \"permissions\" must be 1 (read-only) or 2 (read-write)"},
      {"missing root", [](Json& m) { m["map"]["rootSubmap"] = 9; },
       "map: rootSubmap 9 does not exist"},
      {"object without id", [](Json& m) { m["objects"][0].erase("id"); },
       "object at position 1: \"id\" must be an integer from 1 to 4294967295"},
      {"object id used twice", [](Json& m) { m["objects"][1]["id"] = 10; },
       "object 10: id is used twice"},
      {"unknown field", [](Json& m) { m["objects"][1]["fields"]["Color"] = "red"; },
       "object 11: unknown field \"Color\""},
      {"string field given a number",
       [](Json& m) { m["objects"][1]["fields"]["Selection Name"] = 5; },
       "object 11: field \"Selection Name\" must be a string"},
      {"integer too large",
       [](Json& m) { m["objects"][1]["fields"]["TopM Node ID"] = 4294967296LL; },
       "object 11: field \"TopM Node ID\" must be an integer from -2147483648 to 4294967295"},
      {"unknown constant", [](Json& m) { m["objects"][1]["fields"]["vendor"] = "Nobody"; },
       "object 11: field \"vendor\" has no constant \"Nobody\""},
      {"list field given a text",
       [](Json& m) { m["objects"][1]["fields"]["TopM Interface List"] = "x"; },
       "object 11: field \"TopM Interface List\" is a list and takes an array"},
      {"scalar field given a list",
       [](Json& m) { m["objects"][1]["fields"]["IP Address"] = {"a"}; },
       "object 11: field \"IP Address\" is not a list field"},
      {"selection name used twice",
       [](Json& m) { m["objects"][1]["fields"]["Selection Name"] = "a"; },
       "object 11: selection name \"a\" is already used by object 10"},
      {"child submap of another object", [](Json& m) { m["objects"][1]["childSubmap"] = 2; },
       "object 11: childSubmap 2 has parentObject 10"},
      {"child submap missing", [](Json& m) { m["objects"][1]["childSubmap"] = 7; },
       "object 11: childSubmap 7 does not exist"},
      {"parent object disagrees", [](Json& m) { m["submaps"][0]["parentObject"] = 11; },
       "submap 1: parentObject 11 has childSubmap 0"},
      {"parent object missing", [](Json& m) { m["submaps"][0]["parentObject"] = 99; },
       "submap 1: parentObject 99 does not exist"},
      {"symbol on a missing submap", [](Json& m) { m["symbols"][0]["submap"] = 7; },
       "symbol 100: submap 7 does not exist"},
      {"symbol of a missing object", [](Json& m) { m["symbols"][0]["object"] = 99; },
       "symbol 100: object 99 does not exist"},
      {"symbol without submap", [](Json& m) { m["symbols"][0].erase("submap"); },
       "symbol 100: \"submap\" is missing"},
      {"bad variety", [](Json& m) { m["symbols"][0]["variety"] = 3; },
       "symbol 100: \"variety\" must be 1 (icon) or 2 (connection)"},
      {"bad plane", [](Json& m) { m["symbols"][0]["plane"] = 1; },
       "symbol 100: \"plane\" must be 2 (application) or 4 (user)"},
      {"missing endpoint", [](Json& m) { m["symbols"][2]["endpoint2"] = 999; },
       "symbol 102: endpoint 999 does not exist"},
      {"endpoint on another submap", [](Json& m) { m["symbols"][0]["submap"] = 2; },
       "symbol 102: endpoint 100 lies on another submap"},
      {"connection to itself", [](Json& m) { m["symbols"][2]["endpoint2"] = 102; },
       "symbol 102: endpoint 102 is the connection itself"},
      {"connection without endpoints", [](Json& m) { m["symbols"][2].erase("endpoint1"); },
       "symbol 102: a connection needs \"endpoint1\" and \"endpoint2\""},
      {"position of a connection", [](Json& m) { m["symbols"][2]["x"] = 1; },
       "symbol 102: key \"x\" applies to icon symbols only"},
      {"missing predecessor",
       [](Json& m) { m["symbols"][1]["placement"] = 2, m["symbols"][1]["pred"] = 555; },
       "symbol 101: pred 555 does not exist"},
      {"placed after a connection",
       [](Json& m) { m["symbols"][1]["placement"] = 2, m["symbols"][1]["pred"] = 102; },
       "symbol 101: pred 102 is a connection"},
      {"predecessors in a loop",
       [](Json& m) { m["symbols"][0]["pred"] = 101, m["symbols"][1]["pred"] = 100; },
       "symbol 100: pred 101 makes a loop: 100 after 101 after 100"},
      {"symbol after itself", [](Json& m) { m["symbols"][1]["pred"] = 101; },
       "symbol 101: pred 101 makes a loop: 101 after 101"},
      {"unknown symbol key", [](Json& m) { m["symbols"][0]["colour"] = 1; },
       "symbol 100: unknown key \"colour\""},
      {"symbol id used twice", [](Json& m) { m["symbols"][1]["id"] = 100; },
       "symbol 100: id is used twice"},
      {"bad field type",
       [](Json& m) { m["fields"] = Json::parse(R"([{"name": "X", "type": "float"}])"); },
       "field \"X\": \"type\" must be \"integer\", \"boolean\", \"string\" or \"enumeration\""},
      {"field id claimed twice",
       [](Json& m) {
         m["fields"] = Json::parse(
             R"([{"id": 40, "name": "A", "type": "string"}, {"id": 40, "name": "B", "type": "string"}])");
       },
       "field \"B\": id 40 is already used"},
      {"capability that is not a boolean",
       [](Json& m) {
         m["fields"] = Json::parse(R"([{"name": "X", "type": "string", "capability": true}])");
       },
       "field \"X\": a capability field must be a boolean that is not a list"},
      {"standardFields not a flag", [](Json& m) { m["standardFields"] = "yes"; },
       "standardFields: must be true or false"},
      {"objects not an array", [](Json& m) { m["objects"] = Json::object(); },
       "\"objects\": must be an array"},
  };
  for (const Case& c : cases) {
    Json map = BaseMap();
    c.change(map);
    EXPECT_EQ(LoadError(map.dump()), "map.json: " + c.message) << c.what;
  }
}

TEST(LoaderTest, TextThatIsNotAMapIsRefused) {
  EXPECT_EQ(LoadError("[1]"), "map.json: map file: must be a JSON object");
  EXPECT_EQ(LoadError(R"({"objects": [{"id": 1, "id": 2}]})"),
            "map.json: object at position 1: key \"id\" appears twice");
  EXPECT_EQ(LoadError("{\"map\": ").rfind("map.json: invalid JSON: parse error at line 1", 0), 0u);
  std::string error;
  EXPECT_EQ(qxwemu::LoadMapFile("/nonexistent/map.json", &error), nullptr);
  EXPECT_EQ(error, "/nonexistent/map.json: cannot be read");
}

TEST(LoaderTest, FieldsMayFollowTheObjectsThatUseThem) {
  Json map = Json::parse(R"({
    "objects": [{"id": 1, "fields": {"Serial Number": "SN-1", "Selection Name": "x"}}],
    "submaps": [{"id": 1, "name": "Root"}],
    "map": {"name": "late", "permissions": 1, "rootSubmap": 1},
    "fields": [{"name": "Serial Number", "type": "string"}],
    "standardFields": true})");
  std::string error;
  std::unique_ptr<qxwemu::Map> loaded = qxwemu::LoadMap(map.dump(), "late.json", &error);
  ASSERT_NE(loaded, nullptr) << error;
  const qxwemu::FieldDef* serial = loaded->FieldByName("Serial Number");
  ASSERT_NE(serial, nullptr);
  EXPECT_EQ(loaded->FindObject(1)->Find(serial->id)->scalar.text, "SN-1");
}

TEST(LoaderTest, FieldIdsAreTakenInOrderAroundClaimedOnes) {
  Json map = BaseMap();
  map["standardFields"] = false;
  map["fields"] = Json::parse(R"([{"name": "Selection Name", "type": "string"},
                                  {"name": "B", "type": "integer", "id": 1},
                                  {"name": "C", "type": "boolean"}])");
  std::string error;
  std::unique_ptr<qxwemu::Map> loaded = qxwemu::LoadMap(map.dump(), "ids.json", &error);
  ASSERT_NE(loaded, nullptr) << error;
  EXPECT_EQ(loaded->FieldByName("Selection Name")->id, 2u);
  EXPECT_EQ(loaded->FieldByName("B")->id, 1u);
  EXPECT_EQ(loaded->FieldByName("C")->id, 3u);
  EXPECT_EQ(loaded->FieldByName("TopM Network ID"), nullptr);
}

TEST(LoaderTest, DumpReloadsToTheSameMap) {
  std::string error;
  std::unique_ptr<qxwemu::Map> first = qxwemu::LoadDefaultMap(&error);
  ASSERT_NE(first, nullptr) << error;
  Json dumped = qxwemu::DumpMap(*first);
  std::unique_ptr<qxwemu::Map> second = qxwemu::LoadMap(dumped.dump(), "dump.json", &error);
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

}  // namespace
