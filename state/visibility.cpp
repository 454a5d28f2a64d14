// Hiding and showing symbols: named directly, or through interface objects,
// whose node symbols on the segment and network submaps follow them.
#include "state/visibility.h"

#include <cstdio>
#include <memory>

#include "bridge/tracescope.h"
#include "dispatcher/main.h"
#include "platform/qxw.h"
#include "platform/qxwdb.h"
#include "state/idfetch.h"
#include "tables/childsubmapidhashtable.h"
#include "tables/idsets.h"
#include "tables/keyedtable.h"
#include "tables/networksubmapnodeinterfaceshashtable.h"
#include "tables/symbolinfohashtables.h"

using skiff::ObjectFieldValueListPtr;
using skiff::state::FetchIds;
using skiff::state::IdFetch;

namespace {

// The application whose symbols stand for interfaces on a node's submap.
constexpr char kIPMapAppName[] = "IP Map";

// The integer value of one entry of a field value list; 0 when it has none
// (also when it holds something other than an integer).
QXwObjectId IntegerField(const QXwObjectField& entry) {
  return static_cast<QXwObjectId>(skiff::IntegerValue(entry.field_value).value_or(0));
}

// One TopM field of every interface, in the interfaces' order.
ObjectFieldValueListPtr ReadField(QXwObjectIdList* pObjectIdList, QXwFieldId fieldId) {
  return ObjectFieldValueListPtr(QXwDbGetFieldValuesByObjects(pObjectIdList, fieldId));
}

int CountOf(const ObjectFieldValueListPtr& pList) { return pList != nullptr ? pList->count : 0; }

// The first symbol of the list that shows the object, or null.
const QXwSymbolInfo* FirstSymbolOf(const QXwSymbolList* pSymbolList, QXwObjectId objectId) {
  if (pSymbolList == nullptr) return nullptr;
  for (int i = 0; i < pSymbolList->count; ++i) {
    if (pSymbolList->symbols[i].object.object_id == objectId) return &pSymbolList->symbols[i];
  }
  return nullptr;
}

// True when every interface of `relevantInterfaceObjectIds` (a node's
// interfaces on one network) will show the requested state once this request
// is carried out: it is one of `changingInterfaceObjectIds`, or its first
// symbol on the node's submap (`pNodeSubmapSymbols`, possibly null) has the
// hidden flag `doSetHidden`, or it has no symbol there. Every position of
// the list counts alike.
bool RelevantInterfacesShareVisibility(const QXwObjectIdList& relevantInterfaceObjectIds,
                                       QXwObjectIdHashtable& changingInterfaceObjectIds,
                                       const QXwSymbolList* pNodeSubmapSymbols, int doSetHidden) {
  for (int i = 0; i < relevantInterfaceObjectIds.count; ++i) {
    const QXwObjectId interfaceObjectId = relevantInterfaceObjectIds.object_ids[i];
    // Its symbol takes the requested state in this very request.
    if (changingInterfaceObjectIds.Contains(interfaceObjectId)) continue;
    const QXwSymbolInfo* pSymbol = FirstSymbolOf(pNodeSubmapSymbols, interfaceObjectId);
    // A symbol in the other state stays so: the node stays in that state on
    // the network too.
    if (pSymbol != nullptr && (pSymbol->hidden != 0) != (doSetHidden != 0)) return false;
  }
  return true;
}

// QxwEventDispatcher::GetAssociatedIPMapSymbolsInvolvedInVisibilityChange on
// the map pMap, with its trace lines when verbose.
void FindInterfaceAndNodeSymbols(QXwMapInfo* pMap, bool verbose, QXwObjectId interfaceObjectId,
                                 QXwObjectId nodeObjectId, QXwObjectId segmentObjectId,
                                 QXwObjectId networkObjectId,
                                 QXwChildSubmapIdHashtable* pChildSubmapIdHashtable,
                                 ObjectSymbolInfoHashtable* pSymbolInfoHashtable,
                                 QXwSymbolId* pInterfaceSymbolId, QXwSymbolId* pSegmentNodeSymbolId,
                                 QXwSymbolId* pNetworkNodeSymbolId) {
  SKIFF_TRACE("FindInterfaceAndNodeSymbols");
  const QXwSubmapId segmentSubmapId =
      pChildSubmapIdHashtable->GetChildSubmapId(pMap, segmentObjectId);
  const QXwSubmapId networkSubmapId =
      pChildSubmapIdHashtable->GetChildSubmapId(pMap, networkObjectId);
  if (segmentSubmapId == 0) {
    std::fprintf(stderr,
                 "QxwEventDispatcher::GetAssociatedIPMapSymbolsInvolvedInVisibilityChange "
                 "segmentObjectId=%d has no child submap!\n",
                 static_cast<int>(segmentObjectId));
    return;
  }
  const QXwSymbolList* pInterfaceSymbolList =
      pSymbolInfoHashtable->GetSymbolList(pMap, interfaceObjectId);
  const QXwSymbolList* pNodeSymbolList = pSymbolInfoHashtable->GetSymbolList(pMap, nodeObjectId);
  const QXwSubmapId nodeSubmapId = pChildSubmapIdHashtable->GetChildSubmapId(pMap, nodeObjectId);

  if (pInterfaceSymbolList != nullptr) {
    for (int i = 0; i < pInterfaceSymbolList->count; ++i) {
      const QXwSymbolInfo& symbol = pInterfaceSymbolList->symbols[i];
      if (symbol.submap_id == nodeSubmapId) {
        *pInterfaceSymbolId = symbol.symbol_id;
        break;
      }
    }
  }
  if (pNodeSymbolList != nullptr) {
    bool segmentNodeSymbolFound = false;
    bool networkNodeSymbolFound = false;
    for (int i = 0; i < pNodeSymbolList->count; ++i) {
      const QXwSymbolInfo& symbol = pNodeSymbolList->symbols[i];
      if (symbol.submap_id == segmentSubmapId) {
        *pSegmentNodeSymbolId = symbol.symbol_id;
        segmentNodeSymbolFound = true;
      } else if (symbol.submap_id == networkSubmapId) {
        *pNetworkNodeSymbolId = symbol.symbol_id;
        networkNodeSymbolFound = true;
      }
      if (segmentNodeSymbolFound && networkNodeSymbolFound) break;
    }
  }
  if (verbose) {
    std::fprintf(stderr,
                 "QxwEventDispatcher::GetAssociatedIPMapSymbolsInvolvedInVisibilityChange\n"
                 " interfaceObjectId:%d nodeObjectId:%d segmentObjectId:%d networkObjectId:%d\n"
                 " results in interfaceSymbolId:%d segmentNodeSymbolId:%d networkNodeSymbolId:%d\n",
                 static_cast<int>(interfaceObjectId), static_cast<int>(nodeObjectId),
                 static_cast<int>(segmentObjectId), static_cast<int>(networkObjectId),
                 static_cast<int>(*pInterfaceSymbolId), static_cast<int>(*pSegmentNodeSymbolId),
                 static_cast<int>(*pNetworkNodeSymbolId));
  }
}

// QxwEventDispatcher::DoSetNetworkSubmapNodeSymbolHidden on the map pMap,
// with its trace line when verbose.
QXwBoolean NetworkNodeSymbolTakesState(
    QXwMapInfo* pMap, bool verbose, QXwObjectId nodeObjectId, QXwObjectId networkObjectId,
    int doSetHidden, SubmapSymbolInfoHashtable* pNodeSubmapSymbolInfoHashtable,
    QXwChildSubmapIdHashtable* pChildSubmapIdHashtable,
    NetworkSubmapNodeInterfacesHashtable* pNetworkSubmapNodeInterfacesHashtable,
    QXwObjectIdHashtable* pInterfaceObjectIdHashtable) {
  SKIFF_TRACE("NetworkNodeSymbolTakesState");
  QXwBoolean doSetNetworkSubmapNodeSymbolHidden = doSetHidden;
  if (doSetHidden == 1) {
    const QXwObjectIdList* pRelevantInterfaceObjectIds =
        pNetworkSubmapNodeInterfacesHashtable->GetRelevantInterfaceObjectIds(networkObjectId,
                                                                             nodeObjectId);
    if (pRelevantInterfaceObjectIds == nullptr) {
      doSetNetworkSubmapNodeSymbolHidden = true;
    } else {
      const QXwSubmapId nodeSubmapId =
          pChildSubmapIdHashtable->GetChildSubmapId(pMap, nodeObjectId);
      const QXwSymbolList* pSymbolList =
          nodeSubmapId != 0 ? pNodeSubmapSymbolInfoHashtable->GetSymbolList(
                                  pMap, nodeSubmapId, QXW_PLANE_APPLICATION, kIPMapAppName)
                            : nullptr;
      doSetNetworkSubmapNodeSymbolHidden = RelevantInterfacesShareVisibility(
          *pRelevantInterfaceObjectIds, *pInterfaceObjectIdHashtable, pSymbolList, doSetHidden);
    }
  }
  if (verbose) {
    std::fprintf(stderr,
                 "QxwEventDispatcher::DoSetNetworkSubmapNodeSymbolHidden\n"
                 " nodeObjectId:%d networkObjectId:%d doSetHidden:%d\n returning %d\n",
                 static_cast<int>(nodeObjectId), static_cast<int>(networkObjectId), doSetHidden,
                 doSetNetworkSubmapNodeSymbolHidden);
  }
  return doSetNetworkSubmapNodeSymbolHidden;
}

// Hides (1) or shows (0) the symbols on the map pMap in one platform call; a
// failure is written on standard error.
void SetSymbolsVisibility(QXwMapInfo* pMap, std::vector<QXwSymbolId>& symbolIds, int doSetHidden) {
  QXwSymbolIdList symbolIdList = skiff::state::SymbolIdList(symbolIds);
  if (QXwSetSymbolsVisibility(pMap, &symbolIdList, doSetHidden) != 0) {
    std::fprintf(stderr, "QXwSetSymbolsVisibility failed: %s\n", skiff::state::PlatformErrorText());
  }
}

}  // namespace

void QxwEventDispatcher::SetSymbolVisibilityState(int numSymbols, int doSetHidden) {
  SKIFF_TRACE("QxwEventDispatcher::SetSymbolVisibilityState");
  const IdFetch fetch{
      m_getVisibilityStateSymbolIds, /*passesCount=*/false,
      "In QxwEventDispatcher::SetSymbolVisibilityState: numSymbols=%d doSetHidden=%d\n",
      "QxwEventDispatcher::SetSymbolVisibilityState failed, numSymbols=%d, arraySize=%d\n"};
  std::optional<std::vector<QXwSymbolId>> symbolIds = FetchIds(
      {skiff::jni::AttachedEnv(), Peer(), m_doUseVerboseMode != 0}, fetch, numSymbols, doSetHidden);
  if (symbolIds) SetSymbolsVisibility(m_pMap, *symbolIds, doSetHidden);
}

void QxwEventDispatcher::SetInterfaceAndNodeVisibilityState(int numInterfaceObjects,
                                                            int doSetHidden) {
  SKIFF_TRACE("QxwEventDispatcher::SetInterfaceAndNodeVisibilityState");
  const IdFetch fetch{m_getInterfaceAndNodeVisibilityStateObjectIds, /*passesCount=*/false,
                      "In QxwEventDispatcher::SetInterfaceAndNodeVisibilityState: "
                      "numInterfaceObjects=%d doSetHidden=%d\n",
                      "QxwEventDispatcher::SetInterfaceAndNodeVisibilityState failed, "
                      "numInterfaceObjects=%d, arraySize=%d\n"};
  std::optional<std::vector<QXwObjectId>> interfaceObjectIds =
      FetchIds({skiff::jni::AttachedEnv(), Peer(), m_doUseVerboseMode != 0}, fetch,
               numInterfaceObjects, doSetHidden);
  if (!interfaceObjectIds) return;
  std::vector<QXwSymbolId> visibilitySymbolIds;
  const skiff::state::VisibilityInputs inputs{m_pMap, SessionFieldIds(), m_doUseVerboseMode != 0};
  if (skiff::state::CollectInterfaceAndNodeVisibilitySymbols(inputs, *interfaceObjectIds,
                                                             doSetHidden, &visibilitySymbolIds)) {
    // Also when there is nothing to change: the platform gets one call per
    // request.
    SetSymbolsVisibility(m_pMap, visibilitySymbolIds, doSetHidden);
  }
}

void QxwEventDispatcher::GetAssociatedIPMapSymbolsInvolvedInVisibilityChange(
    QXwObjectId interfaceObjectId, QXwObjectId nodeObjectId, QXwObjectId segmentObjectId,
    QXwObjectId networkObjectId, QXwChildSubmapIdHashtable* pChildSubmapIdHashtable,
    ObjectSymbolInfoHashtable* pSymbolInfoHashtable, QXwSymbolId* pInterfaceSymbolId,
    QXwSymbolId* pSegmentNodeSymbolId, QXwSymbolId* pNetworkNodeSymbolId) {
  SKIFF_TRACE("QxwEventDispatcher::GetAssociatedIPMapSymbolsInvolvedInVisibilityChange");
  FindInterfaceAndNodeSymbols(m_pMap, m_doUseVerboseMode != 0, interfaceObjectId, nodeObjectId,
                              segmentObjectId, networkObjectId, pChildSubmapIdHashtable,
                              pSymbolInfoHashtable, pInterfaceSymbolId, pSegmentNodeSymbolId,
                              pNetworkNodeSymbolId);
}

QXwBoolean QxwEventDispatcher::DoSetNetworkSubmapNodeSymbolHidden(
    QXwObjectId nodeObjectId, QXwObjectId networkObjectId, int doSetHidden,
    SubmapSymbolInfoHashtable* pNodeSubmapSymbolInfoHashtable,
    QXwChildSubmapIdHashtable* pChildSubmapIdHashtable,
    NetworkSubmapNodeInterfacesHashtable* pNetworkSubmapNodeInterfacesHashtable,
    QXwObjectIdHashtable* pInterfaceObjectIdHashtable) {
  SKIFF_TRACE("QxwEventDispatcher::DoSetNetworkSubmapNodeSymbolHidden");
  return NetworkNodeSymbolTakesState(m_pMap, m_doUseVerboseMode != 0, nodeObjectId, networkObjectId,
                                     doSetHidden, pNodeSubmapSymbolInfoHashtable,
                                     pChildSubmapIdHashtable, pNetworkSubmapNodeInterfacesHashtable,
                                     pInterfaceObjectIdHashtable);
}

namespace skiff::state {

bool CollectInterfaceAndNodeVisibilitySymbols(const VisibilityInputs& inputs,
                                              std::vector<QXwObjectId>& interfaceObjectIds,
                                              int doSetHidden,
                                              std::vector<QXwSymbolId>* pVisibilitySymbolIds) {
  SKIFF_TRACE("skiff::state::CollectInterfaceAndNodeVisibilitySymbols");
  const FieldIds& ids = inputs.fieldIds;
  const int numInterfaceObjects = static_cast<int>(interfaceObjectIds.size());
  QXwObjectIdList objectIdList = ObjectIdList(interfaceObjectIds);
  // Entry i of each list belongs to interface i.
  ObjectFieldValueListPtr pNodeObjectFieldList = ReadField(&objectIdList, ids.topMNodeId);
  ObjectFieldValueListPtr pSegmentObjectFieldList = ReadField(&objectIdList, ids.topMSegmentId);
  ObjectFieldValueListPtr pNetworkObjectFieldList = ReadField(&objectIdList, ids.topMNetworkId);
  auto complete = [numInterfaceObjects](const ObjectFieldValueListPtr& pList) {
    return pList != nullptr && pList->count == numInterfaceObjects;
  };
  if (!complete(pNodeObjectFieldList) || !complete(pSegmentObjectFieldList) ||
      !complete(pNetworkObjectFieldList)) {
    std::fprintf(stderr,
                 "Problem in SetInterfaceAndNodeVisibilityState\n numInterfaceObjects:%d "
                 "pNodeObjectFieldList:%d (count:%d)\n pSegmentObjectFieldList:%d (count:%d)\n "
                 "pNetworkObjectFieldList:%d (count:%d)\n",
                 numInterfaceObjects, pNodeObjectFieldList != nullptr,
                 CountOf(pNodeObjectFieldList), pSegmentObjectFieldList != nullptr,
                 CountOf(pSegmentObjectFieldList), pNetworkObjectFieldList != nullptr,
                 CountOf(pNetworkObjectFieldList));
    return false;
  }

  // Every look-up goes through these, so that each object, submap and network
  // and node is asked for once per request.
  ObjectSymbolInfoHashtable symbolInfoHashtable;
  QXwChildSubmapIdHashtable childSubmapIdHashtable;
  // The interfaces whose own symbols this request changes.
  QXwObjectIdHashtable interfaceObjectIdHashtable;
  NetworkSubmapNodeInterfacesHashtable networkSubmapNodeInterfacesHashtable(
      ids.isInterface, ids.topMNodeId, ids.topMNetworkId);
  SubmapSymbolInfoHashtable nodeSubmapSymbolInfoHashtable;

  std::vector<QXwSymbolId>& visibilitySymbolIds = *pVisibilitySymbolIds;
  visibilitySymbolIds.reserve(3 * interfaceObjectIds.size());
  for (int i = 0; i < numInterfaceObjects; ++i) {
    const QXwObjectId interfaceObjectId = interfaceObjectIds[i];
    const QXwObjectId nodeObjectId = IntegerField(pNodeObjectFieldList->objects[i]);
    const QXwObjectId segmentObjectId = IntegerField(pSegmentObjectFieldList->objects[i]);
    const QXwObjectId networkObjectId = IntegerField(pNetworkObjectFieldList->objects[i]);
    QXwSymbolId interfaceSymbolId = 0, segmentNodeSymbolId = 0, networkNodeSymbolId = 0;
    FindInterfaceAndNodeSymbols(inputs.pMap, inputs.verbose, interfaceObjectId, nodeObjectId,
                                segmentObjectId, networkObjectId, &childSubmapIdHashtable,
                                &symbolInfoHashtable, &interfaceSymbolId, &segmentNodeSymbolId,
                                &networkNodeSymbolId);
    if (interfaceSymbolId != 0) {
      visibilitySymbolIds.push_back(interfaceSymbolId);
      interfaceObjectIdHashtable.Add(interfaceObjectId);
    }
    if (segmentNodeSymbolId != 0) visibilitySymbolIds.push_back(segmentNodeSymbolId);
    // One entry per network and node, the first offered; it also fetches the
    // node's interfaces on that network.
    if (networkNodeSymbolId != 0) {
      networkSubmapNodeInterfacesHashtable.AddKey(networkObjectId, nodeObjectId,
                                                  networkNodeSymbolId);
    }
  }

  // Only look-ups happen meanwhile: the entries were all made above.
  skiff::ForEachEntry(networkSubmapNodeInterfacesHashtable, [&](const _HashItem& item) {
    QXwObjectId networkObjectId = 0, nodeObjectId = 0;
    QXwSymbolId networkNodeSymbolId = 0;
    NetworkSubmapNodeInterfacesHashtable::GetNetworkAndNodeObjectIdsAndNetworkNodeSymbolId(
        reinterpret_cast<const char*>(item.key()), &networkObjectId, &nodeObjectId,
        &networkNodeSymbolId);
    if (doSetHidden != 1 ||
        NetworkNodeSymbolTakesState(inputs.pMap, inputs.verbose, nodeObjectId, networkObjectId,
                                    doSetHidden, &nodeSubmapSymbolInfoHashtable,
                                    &childSubmapIdHashtable, &networkSubmapNodeInterfacesHashtable,
                                    &interfaceObjectIdHashtable)) {
      visibilitySymbolIds.push_back(networkNodeSymbolId);
    }
  });
  return true;
}

}  // namespace skiff::state
