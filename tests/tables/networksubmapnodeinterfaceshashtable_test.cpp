// The network-node table: one entry per network and node whatever symbol id
// the key carries, the database asked once per network and node with the
// right bindings, and keys and lists released once.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/qxwdb.h"
#include "tables/keyedtable.h"
#include "tables/networksubmapnodeinterfaceshashtable.h"
#include "tests/support/platform_session.h"
#include "tests/tables/tablesmap.h"

namespace {

using skifftest::Calls;

class NetworkNodeTableTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(session_.ok()) << session_.error();
    skifftest::ResetCalls();
  }

  // The keys the table holds, sorted.
  static std::vector<std::string> Keys(NetworkSubmapNodeInterfacesHashtable& table) {
    std::vector<std::string> keys;
    skiff::ForEachEntry(table, [&](const _HashItem& item) {
      keys.push_back(reinterpret_cast<const char*>(item.key()));
    });
    std::sort(keys.begin(), keys.end());
    return keys;
  }

  skifftest::PlatformSession session_{skifftest::kTablesMap};
  const QXwFieldId isInterface_ = QXwDbFieldNameToFieldId("isInterface");
  const QXwFieldId node_ = QXwDbFieldNameToFieldId("TopM Node ID");
  const QXwFieldId network_ = QXwDbFieldNameToFieldId("TopM Network ID");
};

TEST_F(NetworkNodeTableTest, KeyIdentityIsNetworkAndNode) {
  NetworkSubmapNodeInterfacesHashtable table(isInterface_, node_, network_);
  table.AddKey(12, 34, 56);
  table.AddKey(12, 34, 78);  // the same network and node: the first entry stays
  table.AddKey(12, 345, 6);  // a different node
  table.AddKey(1, 23, 4);    // "1:23" is not "12:3"
  table.AddKey(12, 3, 4);
  EXPECT_EQ(Keys(table), (std::vector<std::string>{"12:345:6", "12:34:56", "12:3:4", "1:23:4"}));
  EXPECT_EQ(table.GetRelevantInterfaceObjectIds(12, 34), nullptr);  // no match, remembered
  EXPECT_EQ(Calls("QXwDbListObjectsByFieldValues"), 4u);
}

TEST_F(NetworkNodeTableTest, FindsTheNodesInterfacesOnceAndFreesThemOnce) {
  {
    NetworkSubmapNodeInterfacesHashtable table(isInterface_, node_, network_);
    table.AddKey(20, 31, 103);
    QXwObjectIdList* node1 = table.GetRelevantInterfaceObjectIds(20, 30);
    ASSERT_NE(node1, nullptr);
    EXPECT_EQ(std::vector<QXwObjectId>(node1->object_ids, node1->object_ids + node1->count),
              (std::vector<QXwObjectId>{40, 41}));
    EXPECT_EQ(table.GetRelevantInterfaceObjectIds(20, 30), node1);
    QXwObjectIdList* node2 = table.GetRelevantInterfaceObjectIds(20, 31);
    ASSERT_NE(node2, nullptr);
    ASSERT_EQ(node2->count, 1);
    EXPECT_EQ(node2->object_ids[0], 42u);
    EXPECT_EQ(Calls("QXwDbListObjectsByFieldValues"), 2u);
    EXPECT_EQ(Keys(table), (std::vector<std::string>{"20:30", "20:31:103"}));

    QXwObjectId network = 0, node = 0;
    QXwSymbolId symbol = 0;
    NetworkSubmapNodeInterfacesHashtable::GetNetworkAndNodeObjectIdsAndNetworkNodeSymbolId(
        "20:31:103", &network, &node, &symbol);
    EXPECT_EQ(std::vector<uint32_t>({network, node, symbol}), (std::vector<uint32_t>{20, 31, 103}));
    EXPECT_EQ(Calls("QXwDbFreeObjectIdList"), 0u);
  }
  EXPECT_EQ(Calls("QXwDbFreeObjectIdList"), 2u);
}

}  // namespace
