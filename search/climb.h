// The one climb of the submap hierarchy that scope tests, parent paths and
// location walks make: from a submap up through the symbols of each submap's
// parent object, depth first, until a submap of the scope is reached.
#ifndef SKIFF_SEARCH_CLIMB_H_
#define SKIFF_SEARCH_CLIMB_H_

#include <cstddef>
#include <optional>
#include <unordered_set>
#include <vector>

#include "platform/qxwrecords.h"
#include "tables/idsets.h"

class ObjectSymbolInfoHashtable;
class QXwSubmapInfoHashtable;

namespace skiff {

// Climbs from `start` to `scope`. A level is a submap's parent object's
// symbols, tried in the order `next(level, depth)` gives them (null when the
// level has no more); the first candidate whose submap is in the scope, or
// whose own level climbs there, wins. `open(submapId)` makes a submap's level
// (nothing when the branch ends there). Each submap is entered once per climb:
// one met again is on the current branch (a cycle) or has failed already, so
// every climb ends, and a map without cycles gets the same answer as an
// unguarded walk. True when the scope was reached; `branch` then holds the
// levels from `start` upwards, each with the `candidate` that led on (none when
// `start` is in the scope itself).
template <class Level, class Open, class Next>
bool ClimbToScope(QXwSubmapId start, SubmapHashtable* scope, Open open, Next next,
                  std::vector<Level>* branch) {
  branch->clear();
  if (scope->Contains(start)) return true;
  std::unordered_set<QXwSubmapId> entered{start};
  if (std::optional<Level> first = open(start)) branch->push_back(std::move(*first));
  while (!branch->empty()) {
    Level& level = branch->back();
    const QXwSymbolInfo* candidate = next(level, branch->size() - 1);
    if (candidate == nullptr) {
      branch->pop_back();
      continue;
    }
    level.candidate = candidate;
    const QXwSubmapId upper = candidate->submap_id;
    if (scope->Contains(upper)) return true;
    if (!entered.insert(upper).second) continue;
    if (std::optional<Level> up = open(upper)) branch->push_back(std::move(*up));
  }
  return false;
}

// A level whose symbols belong to the caller's per-operation cache.
struct CachedLevel {
  QXwSymbolList* parentSymbols = nullptr;
  int cursor = 0;
  const QXwSymbolInfo* candidate = nullptr;
};

// The level of a submap through the caches: nothing when the submap cannot be
// fetched, has no parent object (the root) or its parent has no symbols.
std::optional<CachedLevel> OpenCachedLevel(QXwMapInfo* pMap, QXwSubmapId submapId,
                                           QXwSubmapInfoHashtable* pSubmapInfoHashtable,
                                           ObjectSymbolInfoHashtable* pSymbolInfoHashtable);

}  // namespace skiff

#endif  // SKIFF_SEARCH_CLIMB_H_
