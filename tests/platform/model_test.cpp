// The map model on its own: removing symbols relinks the ones placed after
// them, and stays finite even on predecessors that loop (which map files and
// control commands refuse, so only a fault could make them).
#include "emulator/model.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "emulator/loader.h"

namespace {

// Symbols 1 to 4 on one submap; 1 after 2, 2 after 3 and 3 after 2 (a loop),
// 4 after 1.
std::unique_ptr<qxwemu::Map> LoopingMap() {
  std::string error;
  std::unique_ptr<qxwemu::Map> map = qxwemu::LoadMap(R"({
    "map": {"name": "m", "permissions": 2, "rootSubmap": 1},
    "objects": [{"id": 1}],
    "submaps": [{"id": 1}],
    "symbols": [{"id": 1, "submap": 1, "object": 1, "variety": 1, "plane": 2},
                {"id": 2, "submap": 1, "object": 1, "variety": 1, "plane": 2},
                {"id": 3, "submap": 1, "object": 1, "variety": 1, "plane": 2},
                {"id": 4, "submap": 1, "object": 1, "variety": 1, "plane": 2}]})",
                                                     "loop.json", &error);
  EXPECT_NE(map, nullptr) << error;
  if (map == nullptr) return map;
  for (auto [id, pred] : {std::pair{1u, 2u}, {2u, 3u}, {3u, 2u}, {4u, 1u}}) {
    map->FindSymbol(id)->pred = pred;
  }
  return map;
}

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
    std::unique_ptr<qxwemu::Map> map = LoopingMap();
    ASSERT_NE(map, nullptr);
    map->RemoveSymbols(c.removed);
    std::map<QXwSymbolId, QXwSymbolId> predAfter;
    for (const qxwemu::Symbol* s : map->SymbolsInOrder()) predAfter[s->id] = s->pred;
    EXPECT_EQ(predAfter, c.predAfter) << "removing " << c.removed.size() << " symbols";
  }
}

}  // namespace
