// The symbols a submap report sends: nodes and connections in the platform's
// order, any other variety skipped; and the node positions a refresh reports.
#include "dispatcher/submapcontents.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// Appends `entry` to the blank-separated `entries`.
void Add(std::string& entries, const std::string& entry) {
  entries += (entries.empty() ? "" : " ") + entry;
}

TEST(SubmapContentsTest, NodesAndConnectionsInOrderOtherVarietiesSkippedTheLastNodeLast) {
  struct Case {
    const char* varieties;  // n node, c connection, o another one; ids from 0
    const char* reported;   // n or c and the symbol id
    const char* positions;  // symbol id and moreToFollow
  } cases[] = {{"ncon", "n0 c1 n3", "0+ 3-"},
               {"n", "n0", "0-"},
               {"nnc", "n0 n1 c2", "0+ 1-"},
               {"cnonc", "c0 n1 n3 c4", "1+ 3-"},
               {"cc", "c0 c1", ""},
               {"", "", ""},
               {"o", "", ""}};
  for (const Case& c : cases) {
    std::vector<QXwSymbolInfo> symbols(std::string(c.varieties).size());
    for (size_t i = 0; i < symbols.size(); ++i) {
      symbols[i].symbol_id = static_cast<QXwSymbolId>(i);
      const char v = c.varieties[i];
      symbols[i].symbol_variety = v == 'n' ? QXW_SYMBOL_ICON : v == 'c' ? QXW_SYMBOL_CONNECTION : 3;
    }
    QXwSymbolList list{static_cast<int>(symbols.size()), symbols.data()};
    std::string reported, positions;
    skiff::ForEachReportedSymbol(
        &list, [&](const QXwSymbolInfo& s) { Add(reported, "n" + std::to_string(s.symbol_id)); },
        [&](const QXwSymbolInfo& s) { Add(reported, "c" + std::to_string(s.symbol_id)); });
    skiff::ForEachNodePosition(&list, [&](const QXwSymbolInfo& s, bool moreToFollow) {
      Add(positions, std::to_string(s.symbol_id) + (moreToFollow ? '+' : '-'));
    });
    EXPECT_EQ(reported, c.reported) << c.varieties;
    EXPECT_EQ(positions, c.positions) << c.varieties;
  }
  auto none = [](const QXwSymbolInfo&, bool = false) { FAIL(); };
  skiff::ForEachReportedSymbol(nullptr, none, none);
  skiff::ForEachNodePosition(nullptr, none);
}

}  // namespace
