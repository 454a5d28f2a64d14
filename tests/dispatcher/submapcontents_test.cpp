// The symbols a submap report sends: nodes and connections in the platform's
// order, any other variety skipped; and the node positions a refresh reports.
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

// Varieties: n node, c connection, o another one.
TEST(SubmapContentsTest, EveryNodePositionIsReportedTheLastOneWithNothingToFollow) {
  struct Case {
    const char* varieties;
    const char* reported;  // symbol index and moreToFollow
  };
  const Case cases[] = {
      {"ncn", "0+ 2-"}, {"n", "0-"}, {"nnc", "0+ 1-"}, {"cnonc", "1+ 3-"},
      {"cc", ""},       {"", ""},    {"o", ""},
  };
  for (const Case& c : cases) {
    std::vector<QXwSymbolInfo> symbols(std::string(c.varieties).size());
    for (size_t i = 0; i < symbols.size(); ++i) {
      symbols[i].symbol_id = static_cast<QXwSymbolId>(i);
      const char v = c.varieties[i];
      symbols[i].symbol_variety = v == 'n' ? QXW_SYMBOL_ICON : v == 'c' ? QXW_SYMBOL_CONNECTION : 3;
    }
    QXwSymbolList list{static_cast<int>(symbols.size()), symbols.data()};
    std::string reported;
    skiff::ForEachNodePosition(&list, [&](const QXwSymbolInfo& s, bool moreToFollow) {
      if (!reported.empty()) reported += ' ';
      reported += std::to_string(s.symbol_id) + (moreToFollow ? '+' : '-');
    });
    EXPECT_EQ(reported, c.reported) << c.varieties;
  }
  skiff::ForEachNodePosition(nullptr, [](const QXwSymbolInfo&, bool) { FAIL(); });
}

}  // namespace
