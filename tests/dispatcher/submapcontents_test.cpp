// The symbols a submap report sends: nodes and connections in the platform's
// order, any other variety skipped.
#include "dispatcher/submapcontents.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

TEST(SubmapContentsTest, NodesAndConnectionsAreReportedInOrderOtherVarietiesSkipped) {
  QXwSymbolInfo symbols[4] = {};
  const int varieties[] = {QXW_SYMBOL_ICON, QXW_SYMBOL_CONNECTION, 3, QXW_SYMBOL_ICON};
  for (int i = 0; i < 4; ++i) {
    symbols[i].symbol_id = 100 + i;
    symbols[i].symbol_variety = varieties[i];
  }
  QXwSymbolList list{4, symbols};
  std::vector<std::string> reported;
  skiff::ForEachReportedSymbol(
      &list,
      [&](const QXwSymbolInfo& s) { reported.push_back("node " + std::to_string(s.symbol_id)); },
      [&](const QXwSymbolInfo& s) {
        reported.push_back("connection " + std::to_string(s.symbol_id));
      });
  EXPECT_EQ(reported, (std::vector<std::string>{"node 100", "connection 101", "node 103"}));

  reported.clear();
  auto none = [&](const QXwSymbolInfo&) { reported.push_back("?"); };
  skiff::ForEachReportedSymbol(nullptr, none, none);
  EXPECT_TRUE(reported.empty());
}

}  // namespace
