// Location scoping: the locations that contain each network, in bulk on
// request and one network at a time as network symbols appear.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "bridge/arrays.h"
#include "bridge/javacall.h"
#include "bridge/javaid.h"
#include "bridge/tracescope.h"
#include "dispatcher/main.h"
#include "platform/qxcommon.h"
#include "platform/recordowners.h"
#include "scoping/nsp.h"
#include "search/findsymbol.h"
#include "tables/idsets.h"
#include "tables/parentlocationshashtable.h"
#include "tables/scopingcache.h"
#include "tables/submapinfohashtable.h"
#include "tables/symbolinfohashtables.h"

namespace {

// A submap style under which a network's place counts as none.
constexpr int kLayoutStyleWithoutPlaces = 6;

// The locations above a submap, up to the "IP Internet" child submap.
std::unique_ptr<QXwObjectIdHashtable> ParentLocationsOf(QXwMapInfo* pMap,
                                                        const QXwSymbolInfo& symbol,
                                                        SubmapHashtable* pScope,
                                                        QXwSubmapInfoHashtable* pSubmapInfos,
                                                        ObjectSymbolInfoHashtable* pObjectSymbols) {
  auto locations = std::make_unique<QXwObjectIdHashtable>();
  FindSymbol::GetParentLocations(pMap, symbol.symbol_id, symbol.submap_id, symbol.object.object_id,
                                 pSubmapInfos, pObjectSymbols, pScope, locations.get());
  return locations;
}

}  // namespace

void FindSymbol::AddNetworkToLocationScopingInfo(JNIEnv* pEnv, QXwMapInfo* pMap,
                                                 const QXwObjectIdList* pNetworkObjectIdList,
                                                 QXwSubmapId ipInternetSubmapId) {
  SKIFF_TRACE("FindSymbol::AddNetworkToLocationScopingInfo");
  QXwSubmapInfoHashtable submapInfos;
  ObjectSymbolInfoHashtable objectSymbols;
  SubmapHashtable scope;
  scope.Add(ipInternetSubmapId);
  // One walk per submap: networks drawn on the same submap share it.
  ParentLocationsHashtable walked;
  for (int i = 0; pNetworkObjectIdList != nullptr && i < pNetworkObjectIdList->count; ++i) {
    const QXwObjectId networkObjectId = pNetworkObjectIdList->object_ids[i];
    skiff::SymbolListPtr symbols(QXwGetSymbolsByObject(pMap, networkObjectId));
    for (int k = 0; symbols != nullptr && k < symbols->count; ++k) {
      const QXwSymbolInfo& symbol = symbols->symbols[k];
      if (!IsOnAppPlane(&symbol) || !IsInIPTopology(&symbol)) continue;
      QXwObjectIdHashtable* locations = walked.GetParentLocations(symbol.submap_id);
      if (locations == nullptr) {
        auto found = ParentLocationsOf(pMap, symbol, &scope, &submapInfos, &objectSymbols);
        locations = found.get();
        walked.Insert(symbol.submap_id, std::move(found));
      }
      const int count = locations->GetCount();
      std::unique_ptr<QXwObjectId[]> ids = locations->GetObjectIds();
      for (int n = 0; n < count; ++n) {
        QxwEventDispatcher::AddParentLocationInfo(pEnv, networkObjectId, ids[n]);
      }
    }
  }
}

int FindSymbol::NoSiblingsOnIPMapAppPlane(QXwMapInfo* pMap, const QXwSymbolInfo* pSymbolInfo) {
  SKIFF_TRACE("FindSymbol::NoSiblingsOnIPMapAppPlane");
  skiff::SymbolListPtr symbols(QXwGetSymbolsByObject(pMap, pSymbolInfo->object.object_id));
  for (int i = 0; symbols != nullptr && i < symbols->count; ++i) {
    const QXwSymbolInfo* pSibling = &symbols->symbols[i];
    if (!IsOnAppPlane(pSibling) || !IsInIPTopology(pSibling) || !IsIconSymbol(pSibling)) continue;
    // Only the first such symbol counts.
    skiff::SubmapInfoPtr submap(QXwGetSubmapInfo(pMap, pSibling->submap_id));
    return submap == nullptr || submap->layout_style == kLayoutStyleWithoutPlaces;
  }
  return 1;
}

void FindSymbol::InvokeScopingNetworkCreatedCallbackIfNeeded(JNIEnv* pEnv, QXwMapInfo* pMap,
                                                             const QXwSymbolInfo* pSymbolInfo,
                                                             QXwSubmapId ipInternetSubmapId) {
  SKIFF_TRACE("FindSymbol::InvokeScopingNetworkCreatedCallbackIfNeeded");
  if (!IsNetworkSymbol(pSymbolInfo)) return;
  const bool onIPMapAppPlane = IsOnAppPlane(pSymbolInfo) && IsInIPTopology(pSymbolInfo);
  if (!onIPMapAppPlane && !NoSiblingsOnIPMapAppPlane(pMap, pSymbolInfo)) return;
  QXwSubmapInfoHashtable submapInfos;
  ObjectSymbolInfoHashtable objectSymbols;
  SubmapHashtable scope;
  scope.Add(ipInternetSubmapId);
  std::unique_ptr<QXwObjectIdHashtable> locations =
      ParentLocationsOf(pMap, *pSymbolInfo, &scope, &submapInfos, &objectSymbols);
  const int count = locations->GetCount();
  std::unique_ptr<QXwObjectId[]> ids = locations->GetObjectIds();
  QxwEventDispatcher::ScopingNetworkCreatedCB(pEnv, pSymbolInfo->object.object_id, count,
                                              ids.get());
}

void QxwEventDispatcher::GetLocationScopingInfo() {
  SKIFF_TRACE("QxwEventDispatcher::GetLocationScopingInfo");
  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  skiff::ObjectIdListPtr networks(NSP::GetNetworkObjectIds());
  if (networks != nullptr && networks->count > 0) {
    FindSymbol::AddNetworkToLocationScopingInfo(
        pEnv, m_pMap, networks.get(), ScopingCache::GetChildSubmapId(m_pMap, "IP Internet"));
  }
  // The open map is the one whose locations are tracked from now on, as far
  // as it is open for writing.
  std::free(m_mapNameForLocationTracking);
  m_mapNameForLocationTracking = m_pMap != nullptr ? _QXstrdup(m_pMap->map_name) : nullptr;
  m_thisQxwSessionEnablesLocationTracking =
      ShouldEnableLocationTracking(m_pMap, m_mapNameForLocationTracking);
}

void QxwEventDispatcher::AddParentLocationInfo(JNIEnv* pEnv, QXwObjectId networkObjectId,
                                               QXwObjectId parentLocationObjectId) {
  skiff::jni::CallVoid(pEnv, Peer(), m_addParentLocationInfo, skiff::JavaId(networkObjectId),
                       skiff::JavaId(parentLocationObjectId));
}

void QxwEventDispatcher::ScopingNetworkCreatedCB(JNIEnv* pEnv, QXwObjectId networkObjectId,
                                                 int numParentLocations,
                                                 const QXwObjectId* pParentLocationObjectIds) {
  if (m_doUseVerboseMode) {
    std::fprintf(stderr, "ScopingNetworkCreatedCB %d %d", static_cast<int>(networkObjectId),
                 numParentLocations);
  }
  std::vector<uint32_t> ids(
      pParentLocationObjectIds,
      pParentLocationObjectIds + (numParentLocations > 0 ? numParentLocations : 0));
  skiff::jni::LocalRef<jintArray> array = skiff::jni::IntArrayOfIds(pEnv, ids);
  if (!array) return;
  skiff::jni::CallVoid(pEnv, Peer(), m_scopingNetworkCreatedCB, skiff::JavaId(networkObjectId),
                       array.get());
}
