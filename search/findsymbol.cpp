#include "search/findsymbol.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

#include "bridge/tracescope.h"
#include "dispatcher/main.h"
#include "platform/qxw.h"
#include "platform/qxwdb.h"
#include "platform/recordowners.h"
#include "search/climb.h"
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

// The symbols of objects that a report shows, each with its submap's name:
// every one the caller keeps when the scope is unrestricted, else those within
// the scope. The caches serve all objects of one report, and a restricted
// report also takes the objects' own symbol lists through them, so that no
// list is fetched twice.
class ObjectSymbols {
 public:
  ObjectSymbols(QXwMapInfo* pMap, int isScopeUnrestricted, SubmapHashtable* pScope)
      : pMap_(pMap), isScopeUnrestricted_(isScopeUnrestricted), pScope_(pScope) {}

  template <class Keep>
  void ForEach(QXwObjectId objectId, Keep keep, const FindSymbol::FoundSymbolSink& sink) {
    std::unique_ptr<char, decltype(&std::free)> selectionName(
        QXwDbObjectIdToSelectionName(objectId), &std::free);
    skiff::SymbolListPtr owned;
    QXwSymbolList* symbols = nullptr;
    if (isScopeUnrestricted_) {
      owned.reset(QXwGetSymbolsByObject(pMap_, objectId));
      symbols = owned.get();
    } else {
      symbols = objectSymbols_.GetSymbolList(pMap_, objectId);
    }
    for (int i = 0; symbols != nullptr && i < symbols->count; ++i) {
      const QXwSymbolInfo& symbol = symbols->symbols[i];
      if (!keep(symbol)) continue;
      if (!isScopeUnrestricted_ &&
          !FindSymbol::SymbolIsWithinScope(nullptr, pMap_, symbol.symbol_id, symbol.submap_id,
                                           pScope_, /*doRestrictToIPTopology=*/1, &submapInfos_,
                                           &objectSymbols_)) {
        continue;
      }
      const QXwSubmapInfo* pSubmap = submapInfos_.GetSubmapInfo(pMap_, symbol.submap_id);
      const char* submapName = pSubmap != nullptr ? pSubmap->submap_name : nullptr;
      sink(symbol, submapName != nullptr ? submapName : "",
           selectionName != nullptr ? selectionName.get() : "");
    }
  }

 private:
  QXwMapInfo* pMap_;
  int isScopeUnrestricted_;
  SubmapHashtable* pScope_;
  QXwSubmapInfoHashtable submapInfos_;
  ObjectSymbolInfoHashtable objectSymbols_;
};

// A sink that reports each symbol to Java with one addFoundSymbolInfo.
FindSymbol::FoundSymbolSink FoundSymbolReporter(JNIEnv* pEnv) {
  return [pEnv](const QXwSymbolInfo& symbol, const char* submapName, const char* selectionName) {
    QxwEventDispatcher::AddFoundSymbolInfo(
        pEnv, symbol.symbol_label, submapName, selectionName, symbol.object.object_id,
        symbol.symbol_id, symbol.submap_id, symbol.symbol_type, symbol.symbol_status);
  };
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
  std::vector<skiff::CachedLevel> branch;
  return skiff::ClimbToScope(
      submapSymbolLivesOn, pRootSubmapsHashtable,
      [&](QXwSubmapId submapId) {
        return skiff::OpenCachedLevel(pMap, submapId, pSubmapInfoHashtable, pSymbolInfoHashtable);
      },
      [doRestrictToIPTopology](skiff::CachedLevel& level, size_t) {
        return GetNextExplodableSymbol(level.parentSymbols, level.cursor, doRestrictToIPTopology,
                                       /*doRestrictToApplicationPlane=*/1,
                                       /*doIncludeMetaConnSymbols=*/1);
      },
      &branch);
}

void FindSymbol::ForEachFoundSymbol(QXwMapInfo* pMap, const QXwObjectIdList* pObjectIdList,
                                    int isScopeUnrestricted, SubmapHashtable* pRootSubmapsHashtable,
                                    const FoundSymbolSink& sink) {
  SKIFF_TRACE("FindSymbol::ForEachFoundSymbol");
  ObjectSymbols walk(pMap, isScopeUnrestricted, pRootSubmapsHashtable);
  for (int i = 0; pObjectIdList != nullptr && i < pObjectIdList->count; ++i) {
    walk.ForEach(
        pObjectIdList->object_ids[i],
        [](const QXwSymbolInfo& symbol) {
          return IsIconSymbol(&symbol) || IsConnectionSymbol(&symbol);
        },
        sink);
  }
}

void FindSymbol::AddFoundSymbolsInfo(JNIEnv* pEnv, QXwMapInfo* pMap,
                                     const QXwObjectIdList* pObjectIdList, int isScopeUnrestricted,
                                     SubmapHashtable* pRootSubmapsHashtable) {
  SKIFF_TRACE("FindSymbol::AddFoundSymbolsInfo");
  ForEachFoundSymbol(pMap, pObjectIdList, isScopeUnrestricted, pRootSubmapsHashtable,
                     FoundSymbolReporter(pEnv));
}

void FindSymbol::AddOtherSymbolsInfo(JNIEnv* pEnv, QXwMapInfo* pMap, QXwSymbolId symbolId,
                                     QXwObjectId objectId, int isScopeUnrestricted,
                                     SubmapHashtable* pRootSubmapsHashtable) {
  SKIFF_TRACE("FindSymbol::AddOtherSymbolsInfo");
  ObjectSymbols(pMap, isScopeUnrestricted, pRootSubmapsHashtable)
      .ForEach(
          objectId,
          [symbolId](const QXwSymbolInfo& symbol) {
            return symbol.symbol_id != symbolId && IsIconSymbol(&symbol);
          },
          FoundSymbolReporter(pEnv));
}

std::optional<skiff::CachedLevel> skiff::OpenCachedLevel(
    QXwMapInfo* pMap, QXwSubmapId submapId, QXwSubmapInfoHashtable* pSubmapInfoHashtable,
    ObjectSymbolInfoHashtable* pSymbolInfoHashtable) {
  const QXwSubmapInfo* pSubmap = pSubmapInfoHashtable->GetSubmapInfo(pMap, submapId);
  if (pSubmap == nullptr || pSubmap->parent_object_id == 0) return std::nullopt;
  QXwSymbolList* pParentSymbols =
      pSymbolInfoHashtable->GetSymbolList(pMap, pSubmap->parent_object_id);
  if (pParentSymbols == nullptr) return std::nullopt;
  return CachedLevel{pParentSymbols};
}
