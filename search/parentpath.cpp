// Parent paths: from a symbol's submap up to a submap the Java side shows,
// and the locations above a submap.
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

#include "bridge/platformrecords.h"
#include "bridge/tracescope.h"
#include "dispatcher/main.h"
#include "platform/qxw.h"
#include "platform/qxwdb.h"
#include "scoping/nsp.h"
#include "search/findsymbol.h"
#include "tables/idsets.h"
#include "tables/submapinfohashtable.h"
#include "tables/symbolinfohashtables.h"

namespace {

// One level of a path walk: a submap, its parent object's symbols and the
// candidate being tried.
struct PathLevel {
  QXwSubmapId submapId;
  skiff::SymbolListPtr parentSymbols;
  int cursor = 0;
  bool triesMetaConnections = false;
  const QXwSymbolInfo* candidate = nullptr;
};

// The level of a submap: null when the submap or its parent object's
// symbols cannot be fetched (the branch fails there).
std::unique_ptr<PathLevel> LevelOf(QXwMapInfo* pMap, QXwSubmapId submapId) {
  skiff::SubmapInfoPtr submap(QXwGetSubmapInfo(pMap, submapId));
  if (submap == nullptr) return nullptr;
  skiff::SymbolListPtr parentSymbols(QXwGetSymbolsByObject(pMap, submap->parent_object_id));
  if (parentSymbols == nullptr) return nullptr;
  auto level = std::make_unique<PathLevel>();
  level->submapId = submapId;
  level->parentSymbols = std::move(parentSymbols);
  return level;
}

// What heads a path whose top submap is not the map's root submap: the
// symbol by which the whole map shows the top submap's parent object.
void HeadPath(JNIEnv* pEnv, QXwMapInfo* pMap, QXwSubmapId topSubmapId,
              SubmapHashtable* pRootSubmapsHashtable, const FindSymbol::PathSink& sink) {
  if (pMap == nullptr || pRootSubmapsHashtable->Contains(pMap->root_submap_id)) return;
  SubmapHashtable wholeMap;
  wholeMap.Add(pMap->root_submap_id);
  skiff::SubmapInfoPtr top(QXwGetSubmapInfo(pMap, topSubmapId));
  sink(top != nullptr
           ? NSP::GetTopMostIPMapSymbolForObject(pEnv, pMap, top->parent_object_id, &wholeMap)
           : 0);
}

// One walk over the given planes. Depth-first, keeping the branch in
// `levels`: each level tries its parent object's symbols in order and the
// first that reaches the scope wins; then the path is handed out from the top
// down.
int WalkToScope(JNIEnv* pEnv, QXwMapInfo* pMap, QXwSubmapId start,
                SubmapHashtable* pRootSubmapsHashtable, int doRestrictToIPTopology,
                int doRestrictToApplicationPlane, const FindSymbol::PathSink& sink) {
  if (pRootSubmapsHashtable->Contains(start)) {
    HeadPath(pEnv, pMap, start, pRootSubmapsHashtable, sink);
    return 1;
  }
  std::vector<std::unique_ptr<PathLevel>> levels;
  if (auto first = LevelOf(pMap, start)) levels.push_back(std::move(first));
  while (!levels.empty()) {
    PathLevel& level = *levels.back();
    QXwSymbolList* list = level.parentSymbols.get();
    const QXwSymbolInfo* candidate = nullptr;
    if (!level.triesMetaConnections) {
      candidate = FindSymbol::GetNextExplodableSymbol(list, level.cursor, doRestrictToIPTopology,
                                                      doRestrictToApplicationPlane, 0);
      // Meta-connections lead up only from the first level, and only when
      // any application may carry the path.
      if (candidate == nullptr && levels.size() == 1 && !doRestrictToIPTopology) {
        level.triesMetaConnections = true;
        level.cursor = 0;
        continue;
      }
    } else {
      candidate =
          FindSymbol::GetNextMetaConnSymbol(list, level.cursor, doRestrictToApplicationPlane);
    }
    if (candidate == nullptr) {
      levels.pop_back();
      continue;
    }
    level.candidate = candidate;
    const QXwSubmapId upper = candidate->submap_id;
    if (pRootSubmapsHashtable->Contains(upper)) {
      HeadPath(pEnv, pMap, upper, pRootSubmapsHashtable, sink);
      for (auto it = levels.rbegin(); it != levels.rend(); ++it) sink((*it)->candidate->symbol_id);
      return 1;
    }
    const bool onBranch = std::any_of(levels.begin(), levels.end(),
                                      [upper](const auto& l) { return l->submapId == upper; });
    if (onBranch) continue;
    if (auto next = LevelOf(pMap, upper)) levels.push_back(std::move(next));
  }
  return 0;
}

}  // namespace

int FindSymbol::RecreateParentPath(JNIEnv* pEnv, QXwMapInfo* pMap, QXwSymbolId,
                                   QXwSubmapId submapSymbolLivesOn,
                                   SubmapHashtable* pRootSubmapsHashtable,
                                   int doRestrictToIPTopology, const PathSink& sink) {
  SKIFF_TRACE("FindSymbol::RecreateParentPath");
  if (pRootSubmapsHashtable == nullptr) return 0;
  // A failed walk hands out nothing, so the second starts afresh.
  return WalkToScope(pEnv, pMap, submapSymbolLivesOn, pRootSubmapsHashtable, doRestrictToIPTopology,
                     /*doRestrictToApplicationPlane=*/1, sink) ||
         WalkToScope(pEnv, pMap, submapSymbolLivesOn, pRootSubmapsHashtable, doRestrictToIPTopology,
                     /*doRestrictToApplicationPlane=*/0, sink);
}

int FindSymbol::RecreateParentPath(JNIEnv* pEnv, QXwMapInfo* pMap, QXwSymbolId symbolId,
                                   QXwSubmapId submapSymbolLivesOn,
                                   SubmapHashtable* pRootSubmapsHashtable,
                                   int doRestrictToIPTopology) {
  return RecreateParentPath(pEnv, pMap, symbolId, submapSymbolLivesOn, pRootSubmapsHashtable,
                            doRestrictToIPTopology, [pEnv](QXwSymbolId pathSymbolId) {
                              QxwEventDispatcher::AddParentPathInfo(pEnv, pathSymbolId);
                            });
}

int FindSymbol::GetParentLocations(QXwMapInfo* pMap, QXwSymbolId, QXwSubmapId submapSymbolLivesOn,
                                   QXwObjectId, QXwSubmapInfoHashtable* pSubmapInfoHashtable,
                                   ObjectSymbolInfoHashtable* pSymbolInfoHashtable,
                                   SubmapHashtable* pRootSubmapsHashtable,
                                   QXwObjectIdHashtable* pObjectIdHashtable) {
  SKIFF_TRACE("FindSymbol::GetParentLocations");
  if (pRootSubmapsHashtable->Contains(submapSymbolLivesOn)) return 1;
  struct Level {
    QXwSubmapId submapId;
    QXwSymbolList* parentSymbols;  // owned by the cache
    int cursor;
    const QXwSymbolInfo* candidate;
  };
  auto levelOf = [&](QXwSubmapId submapId) {
    QXwSubmapInfo* pSubmap = pSubmapInfoHashtable->GetSubmapInfo(pMap, submapId);
    // A submap without a parent object (the root) leads nowhere.
    QXwSymbolList* list = pSubmap != nullptr && pSubmap->parent_object_id != 0
                              ? pSymbolInfoHashtable->GetSymbolList(pMap, pSubmap->parent_object_id)
                              : nullptr;
    return Level{submapId, list, 0, nullptr};
  };
  std::vector<Level> levels{levelOf(submapSymbolLivesOn)};
  while (!levels.empty()) {
    Level& level = levels.back();
    const QXwSymbolInfo* candidate = GetNextLocationSymbol(level.parentSymbols, level.cursor,
                                                           /*doRestrictToIPTopology=*/1,
                                                           /*doRestrictToApplicationPlane=*/1);
    if (candidate == nullptr) {
      levels.pop_back();
      continue;
    }
    level.candidate = candidate;
    const QXwSubmapId upper = candidate->submap_id;
    if (pRootSubmapsHashtable->Contains(upper)) {
      for (const Level& l : levels) pObjectIdHashtable->Add(l.candidate->object.object_id);
      return 1;
    }
    const bool onBranch = std::any_of(levels.begin(), levels.end(),
                                      [upper](const Level& l) { return l.submapId == upper; });
    if (!onBranch) levels.push_back(levelOf(upper));
  }
  return 0;
}

void FindSymbol::AddOtherSymbolsInfo(JNIEnv* pEnv, QXwMapInfo* pMap, QXwSymbolId symbolId,
                                     QXwObjectId objectId, int isScopeUnrestricted,
                                     SubmapHashtable* pRootSubmapsHashtable) {
  SKIFF_TRACE("FindSymbol::AddOtherSymbolsInfo");
  QXwSubmapInfoHashtable submapInfos;
  ObjectSymbolInfoHashtable objectSymbols;
  skiff::SymbolListPtr symbols(QXwGetSymbolsByObject(pMap, objectId));
  std::unique_ptr<char, decltype(&std::free)> selectionName(QXwDbObjectIdToSelectionName(objectId),
                                                            &std::free);
  for (int i = 0; symbols != nullptr && i < symbols->count; ++i) {
    const QXwSymbolInfo& symbol = symbols->symbols[i];
    if (symbol.symbol_id == symbolId || !IsIconSymbol(&symbol)) continue;
    if (!isScopeUnrestricted &&
        !SymbolIsWithinScope(pEnv, pMap, symbol.symbol_id, symbol.submap_id, pRootSubmapsHashtable,
                             1, &submapInfos, &objectSymbols)) {
      continue;
    }
    const QXwSubmapInfo* pSubmap = submapInfos.GetSubmapInfo(pMap, symbol.submap_id);
    QxwEventDispatcher::AddFoundSymbolInfo(
        pEnv, symbol.symbol_label, pSubmap != nullptr ? pSubmap->submap_name : "",
        selectionName.get(), symbol.object.object_id, symbol.symbol_id, symbol.submap_id,
        symbol.symbol_type, symbol.symbol_status);
  }
}
