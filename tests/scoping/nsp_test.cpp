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
  void SetUp() override { ASSERT_TRUE(session_.ok()) << session_.error(); }

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
  const skiff::scoping::NSPFieldIds ids_ = skiff::scoping::ResolveNSPFieldIds();
};

TEST_F(NSPTest, SynchronizationWritesEveryLocationThenEveryNetworkInOrder) {
  const LocationIDInputs inputs{session_.map(), ids_, false};
  skifftest::ResetCalls();
  skiff::scoping::SynchronizeLocationIDFieldForSubLocations(inputs);
  skiff::scoping::SynchronizeLocationIDFieldForNetworks(inputs);
  EXPECT_EQ(skifftest::Calls("QXwDbSetFieldIntegerValue"), 6u);
  // The later of 10.11.5's two symbols wins; Annex keeps having none.
  EXPECT_EQ(LocationIds(), (std::map<int, long>{{1, 0}, {2, 1}, {3, 1}, {4, 2}, {5, 3}}));
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
      // A later "variety" key replaces the first.
      {R"("submap": 3, "type": "Network:IP", "plane": 2, "variety": 2, "endpoint1": 300,
          "endpoint2": 304)",
       2},
  };
  int objectId = 100;
  for (const Case& c : cases) {
    const std::string id = std::to_string(++objectId);
    skifftest::ControlOk(R"(create-object {"id": )" + id + "}");
    skifftest::ControlOk(R"(create-symbol {"object": )" + id +
                         R"(, "variety": 1, "apps": ["IP Map"], )" + c.symbol + "}");
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
  for (const Case& c : cases) {
    const std::string id = std::to_string(++objectId);
    skifftest::ControlOk(R"(create-object {"id": )" + id + R"(, "fields": {"vendor": 0}})");
    for (const std::string& field : c.trueInOrder) {
      skifftest::ControlOk("set-field " + id + " " + field + " TRUE");
    }
    EXPECT_EQ(skiff::scoping::GetObjectType(ids_, objectId, "name"), c.type) << objectId;
  }
  // An object that cannot be read is named as given (never as a format), or by its id.
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
