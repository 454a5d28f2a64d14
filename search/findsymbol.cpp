#include "search/findsymbol.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <unordered_set>
#include <vector>

#include "bridge/platformrecords.h"
#include "bridge/tracescope.h"
#include "dispatcher/main.h"
#include "platform/qxw.h"
#include "platform/qxwdb.h"
#include "tables/idsets.h"
#include "tables/submapinfohashtable.h"
#include "tables/symbolinfohashtables.h"

namespace {

// True when `text` begins with `prefix`; a null text does not.
bool BeginsWith(const char* text, const char* prefix) {
  return text != nullptr && std::strncmp(text, prefix, std::strlen(prefix)) == 0;
}

// A symbol's kind, as each iterator asks for it.
enum class Kind { kExplodable, kExplodableOrMetaConnection, kLocation, kMetaConnection };

bool IsOfKind(const QXwSymbolInfo* pSymbol, Kind kind) {
  switch (kind) {
    case Kind::kExplodable:
      return FindSymbol::IsIconSymbol(pSymbol);
    case Kind::kExplodableOrMetaConnection:
      return FindSymbol::IsIconSymbol(pSymbol) || FindSymbol::IsMetaConnection(pSymbol);
    case Kind::kLocation:
      return FindSymbol::IsIconSymbol(pSymbol) && FindSymbol::IsLocationSymbol(pSymbol);
    case Kind::kMetaConnection:
      return FindSymbol::IsMetaConnection(pSymbol);
  }
  return false;
}

// The scan that every iterator makes: plane, then kind, then topology.
QXwSymbolInfo* NextSymbol(QXwSymbolList* pSymbolList, int& fromIndex, Kind kind,
                          int doRestrictToIPTopology, int doRestrictToApplicationPlane) {
  if (pSymbolList == nullptr) return nullptr;
  for (int i = fromIndex < 0 ? 0 : fromIndex; i < pSymbolList->count; ++i) {
    QXwSymbolInfo* pSymbol = &pSymbolList->symbols[i];
    if (doRestrictToApplicationPlane && !FindSymbol::IsOnAppPlane(pSymbol)) continue;
    if (!IsOfKind(pSymbol, kind)) continue;
    if (doRestrictToIPTopology && !FindSymbol::IsInIPTopology(pSymbol)) continue;
    fromIndex = i + 1;
    return pSymbol;
  }
  fromIndex = pSymbolList->count;
  return nullptr;
}

}  // namespace

int FindSymbol::IsInIPTopology(const QXwSubmapInfo* pSubmapInfo) {
  return pSubmapInfo != nullptr && pSubmapInfo->app_name != nullptr &&
         std::strcmp(pSubmapInfo->app_name, kIPTopologyAppName) == 0;
}

int FindSymbol::IsInIPTopology(const QXwSymbolInfo* pSymbolInfo) {
  if (pSymbolInfo == nullptr || pSymbolInfo->apps.names == nullptr) return 0;
  for (int i = 0; i < pSymbolInfo->apps.count; ++i) {
    const char* name = pSymbolInfo->apps.names[i];
    if (name != nullptr && std::strcmp(name, kIPTopologyAppName) == 0) return 1;
  }
  return 0;
}

int FindSymbol::IsLocationSymbol(const QXwSymbolInfo* pSymbolInfo) {
  return pSymbolInfo != nullptr && BeginsWith(pSymbolInfo->symbol_type, "Location:");
}

int FindSymbol::IsNetworkSymbol(const QXwSymbolInfo* pSymbolInfo) {
  return pSymbolInfo != nullptr && BeginsWith(pSymbolInfo->symbol_type, "Network:");
}

int FindSymbol::IsOnAppPlane(const QXwSymbolInfo* pSymbolInfo) {
  return pSymbolInfo != nullptr && pSymbolInfo->plane == QXW_PLANE_APPLICATION;
}

int FindSymbol::IsOnUserPlane(const QXwSymbolInfo* pSymbolInfo) {
  return pSymbolInfo != nullptr && pSymbolInfo->plane == QXW_PLANE_USER;
}

int FindSymbol::IsIconSymbol(const QXwSymbolInfo* pSymbolInfo) {
  return pSymbolInfo != nullptr && pSymbolInfo->symbol_variety == QXW_SYMBOL_ICON;
}

int FindSymbol::IsConnectionSymbol(const QXwSymbolInfo* pSymbolInfo) {
  return pSymbolInfo != nullptr && pSymbolInfo->symbol_variety == QXW_SYMBOL_CONNECTION;
}

int FindSymbol::IsMetaConnection(const QXwSymbolInfo* pSymbolInfo) {
  return IsConnectionSymbol(pSymbolInfo) && pSymbolInfo->var_un.conninfo.is_meta_conn;
}

QXwSymbolInfo* FindSymbol::GetNextExplodableSymbol(QXwSymbolList* pSymbolList, int& fromIndex,
                                                   int doRestrictToIPTopology,
                                                   int doRestrictToApplicationPlane,
                                                   int doIncludeMetaConnSymbols) {
  return NextSymbol(
      pSymbolList, fromIndex,
      doIncludeMetaConnSymbols ? Kind::kExplodableOrMetaConnection : Kind::kExplodable,
      doRestrictToIPTopology, doRestrictToApplicationPlane);
}

QXwSymbolInfo* FindSymbol::GetNextLocationSymbol(QXwSymbolList* pSymbolList, int& fromIndex,
                                                 int doRestrictToIPTopology,
                                                 int doRestrictToApplicationPlane) {
  return NextSymbol(pSymbolList, fromIndex, Kind::kLocation, doRestrictToIPTopology,
                    doRestrictToApplicationPlane);
}

QXwSymbolInfo* FindSymbol::GetNextMetaConnSymbol(QXwSymbolList* pSymbolList, int& fromIndex,
                                                 int doRestrictToApplicationPlane) {
  return NextSymbol(pSymbolList, fromIndex, Kind::kMetaConnection, /*doRestrictToIPTopology=*/0,
                    doRestrictToApplicationPlane);
}

QXwSubmapId FindSymbol::GetIPInternetSubmapId(QXwMapInfo* pMap) {
  SKIFF_TRACE("FindSymbol::GetIPInternetSubmapId");
  QXwObjectId objectId = QXwDbSelectionNameToObjectId("IP Internet");
  skiff::ObjectInfoPtr object(QXwGetObjectInfo(pMap, objectId));
  return object != nullptr ? object->child_submap_id : 0;
}

int FindSymbol::SymbolIsWithinScope(JNIEnv*, QXwMapInfo* pMap, QXwSymbolId,
                                    QXwSubmapId submapSymbolLivesOn,
                                    SubmapHashtable* pRootSubmapsHashtable,
                                    int doRestrictToIPTopology,
                                    QXwSubmapInfoHashtable* pSubmapInfoHashtable,
                                    ObjectSymbolInfoHashtable* pSymbolInfoHashtable) {
  SKIFF_TRACE("FindSymbol::SymbolIsWithinScope");
  if (pRootSubmapsHashtable == nullptr) return 0;
  if (pRootSubmapsHashtable->Contains(submapSymbolLivesOn)) return 1;
  // A depth-first walk upwards: from a submap to the submaps that show its
  // parent object, through each symbol in list order. Each level keeps its
  // place in its parent object's symbol list.
  struct Level {
    QXwSymbolList* pParentSymbols;
    int cursor;
  };
  auto levelOf = [&](QXwSubmapId submapId) {
    QXwSubmapInfo* pSubmap = pSubmapInfoHashtable->GetSubmapInfo(pMap, submapId);
    // A submap without a parent object (the root) leads nowhere.
    QXwSymbolList* pParentSymbols =
        pSubmap != nullptr && pSubmap->parent_object_id != 0
            ? pSymbolInfoHashtable->GetSymbolList(pMap, pSubmap->parent_object_id)
            : nullptr;
    return Level{pParentSymbols, 0};
  };
  // Every submap the walk has entered. One that failed fails again on any
  // other branch, and one still on the current branch would be a cycle.
  std::unordered_set<QXwSubmapId> entered{submapSymbolLivesOn};
  std::vector<Level> branch{levelOf(submapSymbolLivesOn)};
  while (!branch.empty()) {
    Level& level = branch.back();
    QXwSymbolInfo* pCandidate =
        GetNextExplodableSymbol(level.pParentSymbols, level.cursor, doRestrictToIPTopology,
                                /*doRestrictToApplicationPlane=*/1, /*doIncludeMetaConnSymbols=*/1);
    if (pCandidate == nullptr) {
      branch.pop_back();
      continue;
    }
    const QXwSubmapId upper = pCandidate->submap_id;
    if (pRootSubmapsHashtable->Contains(upper)) return 1;
    if (entered.insert(upper).second) branch.push_back(levelOf(upper));
  }
  return 0;
}

void FindSymbol::ForEachFoundSymbol(QXwMapInfo* pMap, const QXwObjectIdList* pObjectIdList,
                                    int isScopeUnrestricted, SubmapHashtable* pRootSubmapsHashtable,
                                    const FoundSymbolSink& sink) {
  SKIFF_TRACE("FindSymbol::ForEachFoundSymbol");
  if (pObjectIdList == nullptr) return;
  QXwSubmapInfoHashtable submapInfos;
  ObjectSymbolInfoHashtable objectSymbols;
  for (int i = 0; i < pObjectIdList->count; ++i) {
    const QXwObjectId objectId = pObjectIdList->object_ids[i];
    std::unique_ptr<char, decltype(&std::free)> selectionName(
        QXwDbObjectIdToSelectionName(objectId), &std::free);
    // A restricted search takes the object's symbols through the cache its
    // scope walks share, so that no list is fetched twice.
    skiff::SymbolListPtr owned;
    QXwSymbolList* symbols = nullptr;
    if (isScopeUnrestricted) {
      owned.reset(QXwGetSymbolsByObject(pMap, objectId));
      symbols = owned.get();
    } else {
      symbols = objectSymbols.GetSymbolList(pMap, objectId);
    }
    for (int k = 0; symbols != nullptr && k < symbols->count; ++k) {
      const QXwSymbolInfo& symbol = symbols->symbols[k];
      if (!IsIconSymbol(&symbol) && !IsConnectionSymbol(&symbol)) continue;
      // Icons take the scope test like connections: a restricted search
      // shows only what lies within the roots.
      if (!isScopeUnrestricted &&
          !SymbolIsWithinScope(nullptr, pMap, symbol.symbol_id, symbol.submap_id,
                               pRootSubmapsHashtable, /*doRestrictToIPTopology=*/1, &submapInfos,
                               &objectSymbols)) {
        continue;
      }
      const QXwSubmapInfo* pSubmap = submapInfos.GetSubmapInfo(pMap, symbol.submap_id);
      const char* submapName = pSubmap != nullptr ? pSubmap->submap_name : nullptr;
      sink(symbol, submapName != nullptr ? submapName : "",
           selectionName != nullptr ? selectionName.get() : "");
    }
  }
}

void FindSymbol::AddFoundSymbolsInfo(JNIEnv* pEnv, QXwMapInfo* pMap,
                                     const QXwObjectIdList* pObjectIdList, int isScopeUnrestricted,
                                     SubmapHashtable* pRootSubmapsHashtable) {
  SKIFF_TRACE("FindSymbol::AddFoundSymbolsInfo");
  ForEachFoundSymbol(
      pMap, pObjectIdList, isScopeUnrestricted, pRootSubmapsHashtable,
      [pEnv](const QXwSymbolInfo& symbol, const char* submapName, const char* selectionName) {
        QxwEventDispatcher::AddFoundSymbolInfo(
            pEnv, symbol.symbol_label, submapName, selectionName, symbol.object.object_id,
            symbol.symbol_id, symbol.submap_id, symbol.symbol_type, symbol.symbol_status);
      });
}
