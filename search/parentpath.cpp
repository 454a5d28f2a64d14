// Parent paths: from a symbol's submap up to a submap the Java side shows,
// and the locations above a submap.
#include <optional>
#include <vector>

#include "bridge/tracescope.h"
#include "dispatcher/main.h"
#include "platform/qxw.h"
#include "platform/recordowners.h"
#include "scoping/nsp.h"
#include "search/climb.h"
#include "search/findsymbol.h"
#include "tables/idsets.h"

namespace {

// A level of a path walk. Path walks keep no caches: each level holds its
// parent object's symbols while it is on the branch.
struct PathLevel {
  skiff::SymbolListPtr parentSymbols;
  int cursor = 0;
  bool triesMetaConnections = false;
  const QXwSymbolInfo* candidate = nullptr;
};

std::optional<PathLevel> OpenPathLevel(QXwMapInfo* pMap, QXwSubmapId submapId) {
  skiff::SubmapInfoPtr submap(QXwGetSubmapInfo(pMap, submapId));
  if (submap == nullptr || submap->parent_object_id == 0) return std::nullopt;
  skiff::SymbolListPtr parentSymbols(QXwGetSymbolsByObject(pMap, submap->parent_object_id));
  if (parentSymbols == nullptr) return std::nullopt;
  return PathLevel{std::move(parentSymbols)};
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

// One walk over the given planes; on success the path goes to `sink` from
// the top down.
int WalkToScope(JNIEnv* pEnv, QXwMapInfo* pMap, QXwSubmapId start,
                SubmapHashtable* pRootSubmapsHashtable, int doRestrictToIPTopology,
                int doRestrictToApplicationPlane, const FindSymbol::PathSink& sink) {
  std::vector<PathLevel> branch;
  const bool reached = skiff::ClimbToScope(
      start, pRootSubmapsHashtable,
      [pMap](QXwSubmapId submapId) { return OpenPathLevel(pMap, submapId); },
      [&](PathLevel& level, size_t depth) -> const QXwSymbolInfo* {
        if (!level.triesMetaConnections) {
          if (const QXwSymbolInfo* icon = FindSymbol::GetNextExplodableSymbol(
                  level.parentSymbols.get(), level.cursor, doRestrictToIPTopology,
                  doRestrictToApplicationPlane, 0)) {
            return icon;
          }
          // Meta-connections lead up only from the first level, and only
          // when any application may carry the path.
          if (depth != 0 || doRestrictToIPTopology) return nullptr;
          level.triesMetaConnections = true;
          level.cursor = 0;
        }
        return FindSymbol::GetNextMetaConnSymbol(level.parentSymbols.get(), level.cursor,
                                                 doRestrictToApplicationPlane);
      },
      &branch);
  if (!reached) return 0;
  HeadPath(pEnv, pMap, branch.empty() ? start : branch.back().candidate->submap_id,
           pRootSubmapsHashtable, sink);
  for (auto level = branch.rbegin(); level != branch.rend(); ++level) {
    sink(level->candidate->symbol_id);
  }
  return 1;
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
  std::vector<skiff::CachedLevel> branch;
  const bool reached = skiff::ClimbToScope(
      submapSymbolLivesOn, pRootSubmapsHashtable,
      [&](QXwSubmapId submapId) {
        return skiff::OpenCachedLevel(pMap, submapId, pSubmapInfoHashtable, pSymbolInfoHashtable);
      },
      [](skiff::CachedLevel& level, size_t) {
        return GetNextLocationSymbol(level.parentSymbols, level.cursor,
                                     /*doRestrictToIPTopology=*/1,
                                     /*doRestrictToApplicationPlane=*/1);
      },
      &branch);
  for (const skiff::CachedLevel& level : branch) {
    pObjectIdHashtable->Add(level.candidate->object.object_id);
  }
  return reached;
}
