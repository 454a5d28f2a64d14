// The Location ID field on the search map: Site A and Site B lie on the
// Internet submap (child of "IP Internet", object 1); network 10.1.0 (4) on
// Site A's submap; network 10.11.5 (5) on both sites' submaps; Annex (6)
// only on the user plane.
#include "scoping/locationid.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "platform/qxw.h"
#include "scoping/objecttype.h"
#include "tests/support/platform_session.h"

namespace {

using skiff::scoping::LocationIDInputs;

class NSPTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(session_.ok()) << session_.error();
    ids_ = skiff::scoping::ResolveNSPFieldIds();
  }

  // Object id -> its Location ID, for the objects that have one.
  static std::map<int, long> LocationIds() {
    std::map<int, long> ids;
    const nlohmann::json dump = skifftest::ControlOk("dump");
    for (const nlohmann::json& o : dump["map"]["objects"]) {
      if (o["fields"].contains("Location ID")) ids[o["id"]] = o["fields"]["Location ID"];
    }
    return ids;
  }

  skifftest::PlatformSession session_{skifftest::JavaTestMap("search.json")};
  skiff::scoping::NSPFieldIds ids_;
};

TEST_F(NSPTest, SynchronizationWritesEveryLocationThenEveryNetworkInOrder) {
  for (bool verbose : {true, false}) {
    const LocationIDInputs inputs{session_.map(), ids_, verbose};
    skifftest::ResetCalls();
    testing::internal::CaptureStderr();
    skiff::scoping::SynchronizeLocationIDFieldForSubLocations(inputs);
    skiff::scoping::SynchronizeLocationIDFieldForNetworks(inputs);
    const std::string verboseLines =
        "Entering SynchronizeLocationIDFieldForSubLocations\n"
        "Setting 'Location ID' field: parent IP Internet (oid:1) / child Site A (2)\n"
        "Setting 'Location ID' field: parent IP Internet (oid:1) / child Site B (3)\n"
        "Object Annex (oid:6) has 0 symbol(s) attached (but should have exactly 1 attached)\n"
        "Leaving SynchronizeLocationIDFieldForSubLocations (Location count:3)\n"
        "Entering SynchronizeLocationIDFieldForNetworks\n"
        "Setting 'Location ID' field: parent  (oid:0) / child IP Internet (1)\n"
        "Setting 'Location ID' field: parent Site A (oid:2) / child 10.1.0 (4)\n"
        "Setting 'Location ID' field: parent Site A (oid:2) / child 10.11.5 (5)\n"
        "Setting 'Location ID' field: parent Site B (oid:3) / child 10.11.5 (5)\n"
        "Object 10.11.5 (oid:5) has 2 symbol(s) attached (but should have exactly 1 attached)\n"
        "Leaving SynchronizeLocationIDFieldForNetworks (Network count:3)\n";
    const std::string quietLines =
        "Object Annex (oid:6) has 0 symbol(s) attached (but should have exactly 1 attached)\n"
        "Object 10.11.5 (oid:5) has 2 symbol(s) attached (but should have exactly 1 attached)\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), verbose ? verboseLines : quietLines);
    EXPECT_EQ(skifftest::Calls("QXwDbSetFieldIntegerValue"), 6u);
    // The later of 10.11.5's two symbols wins; Annex keeps having none.
    EXPECT_EQ(LocationIds(), (std::map<int, long>{{1, 0}, {2, 1}, {3, 1}, {4, 2}, {5, 3}}));
  }
}

TEST_F(NSPTest, ANewLocationOrNetworkSymbolOnAnIPMapApplicationPlaneSetsTheField) {
  struct Case {
    const char* symbol;  // the rest of create-symbol's JSON
    long locationId;     // -1: not set
  } cases[] = {
      {R"("submap": 4, "type": "Network:IP", "plane": 2)", 3},
      {R"("submap": 3, "type": "Location:Room", "plane": 2)", 2},
      {R"("submap": 4, "type": "Network:IP", "plane": 4)", -1},
      {R"("submap": 8, "type": "Network:IP", "plane": 2)", -1},
      {R"("submap": 3, "type": "Computer:Workstation", "plane": 2)", -1},
      {R"("submap": 3, "type": "Network:IP", "plane": 2, "variety": 2, "endpoint1": 300,
          "endpoint2": 304)",
       2},
  };
  int objectId = 100;
  for (const Case& c : cases) {
    ++objectId;
    skifftest::ControlOk(R"(create-object {"id": )" + std::to_string(objectId) + "}");
    std::string json = R"({"object": )" + std::to_string(objectId) +
                       R"(, "variety": 1, "apps": ["IP Map"], )" + c.symbol + "}";
    // A later "variety" key replaces the first.
    skifftest::ControlOk("create-symbol " + json);
    QXwSymbolList* symbols = QXwGetSymbolsByObject(session_.map(), objectId);
    ASSERT_NE(symbols, nullptr);
    skiff::scoping::SetLocationIDFieldIfNeeded({session_.map(), ids_, false}, &symbols->symbols[0]);
    QXwFreeSymbolList(symbols);
    std::map<int, long> ids = LocationIds();
    EXPECT_EQ(ids.count(objectId) ? ids[objectId] : -1, c.locationId) << c.symbol;
  }
}

TEST_F(NSPTest, ObjectTypeComesFromTheCapabilityFields) {
  struct Case {
    std::vector<std::string> trueInOrder;
    TOPLEVEL_OBJECT_TYPE type;
  } cases[] = {
      {{"isNode", "isRouter"}, ROUTER_TYPE},       {{"isRouter", "isNode"}, ROUTER_TYPE},
      {{"isNetwork", "isLocation"}, NETWORK_TYPE}, {{"isNode", "isSegment"}, SEGMENT_TYPE},
      {{"isInterface", "isNode"}, NODE_TYPE},      {{}, UNKNOWN_TYPE},
  };
  int objectId = 200;
  testing::internal::CaptureStderr();
  for (const Case& c : cases) {
    ++objectId;
    skifftest::ControlOk(R"(create-object {"id": )" + std::to_string(objectId) +
                         R"(, "fields": {"vendor": 0}})");
    for (const std::string& field : c.trueInOrder) {
      skifftest::ControlOk("set-field " + std::to_string(objectId) + " " + field + " TRUE");
    }
    EXPECT_EQ(skiff::scoping::GetObjectType(ids_, objectId, "name"), c.type) << objectId;
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

  testing::internal::CaptureStderr();
  EXPECT_EQ(skiff::scoping::GetObjectType(ids_, 999, "ghost %s%n"), UNKNOWN_TYPE);
  EXPECT_EQ(skiff::scoping::GetObjectType(ids_, 999, nullptr), UNKNOWN_TYPE);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "The object with Selection Name 'ghost %s%n' is not a Location, Network, Segment or "
            "Node, ignoring...\n"
            "The object with object id '999' is not a Location, Network, Segment or Node, "
            "ignoring...\n");
}

}  // namespace
