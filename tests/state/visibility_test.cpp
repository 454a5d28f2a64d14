// Which symbols a request over interface objects hides or shows, on the map
// that the Java tests use too: a network with a node on it through two
// interfaces (31 and 32), a node with one interface (41) and a node whose
// interface (51) lies on a segment without a child submap.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "state/visibility.h"
#include "tests/support/platform_session.h"

namespace {

class VisibilityTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(session_.ok()) << session_.error();
    inputs_ = {session_.map(), skiff::ResolveFieldIds(), false};
  }

  skifftest::PlatformSession session_{skifftest::JavaTestMap("interface-visibility.json")};
  skiff::state::VisibilityInputs inputs_{};
};

TEST_F(VisibilityTest, CollectsEachInterfacesSymbolsThenTheNetworkNodeSymbols) {
  struct Case {
    std::vector<QXwObjectId> interfaces;
    int doSetHidden;
    std::vector<QXwSymbolId> perInterface;     // in this order
    std::set<QXwSymbolId> networkNodeSymbols;  // in the table's order
  };
  const Case cases[] = {
      // Two interfaces on one segment: the segment node symbol comes twice,
      // the network node symbol once.
      {{31, 32, 41}, 1, {120, 110, 121, 110, 130, 111}, {103, 104}},
      // The other interface stays visible, after or before this one.
      {{31}, 1, {120, 110}, {}},
      {{32}, 1, {121, 110}, {}},
      // Showing takes the network node symbol along always.
      {{31}, 0, {120, 110}, {103}},
      // The interface on a segment without a child submap adds nothing.
      {{51, 41}, 1, {130, 111}, {104}},
      {{}, 1, {}, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.interfaces) + " hidden " + std::to_string(c.doSetHidden));
    std::vector<QXwObjectId> interfaces = c.interfaces;
    std::vector<QXwSymbolId> symbols;
    ASSERT_TRUE(skiff::state::CollectInterfaceAndNodeVisibilitySymbols(inputs_, interfaces,
                                                                       c.doSetHidden, &symbols));
    ASSERT_EQ(symbols.size(), c.perInterface.size() + c.networkNodeSymbols.size());
    EXPECT_EQ(std::vector<QXwSymbolId>(symbols.begin(), symbols.begin() + c.perInterface.size()),
              c.perInterface);
    EXPECT_EQ(std::set<QXwSymbolId>(symbols.begin() + c.perInterface.size(), symbols.end()),
              c.networkNodeSymbols);
  }
}

}  // namespace
