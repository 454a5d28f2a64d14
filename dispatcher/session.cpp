// Map session events: the end of the session, a map opened or closed, and the
// interface objects that location scoping follows.
#include <cstdio>
#include <vector>

#include "bridge/arrays.h"
#include "bridge/text.h"
#include "bridge/tracescope.h"
#include "dispatcher/fieldinfocache.h"
#include "dispatcher/main.h"
#include "dispatcher/verbose.h"
#include "scoping/nsp.h"
#include "tables/scopingcache.h"

using skiff::jni::CallVoid;
using skiff::jni::LocalRef;

namespace {

using Dispatcher = QxwEventDispatcher;

// Set while the session holds no copy of the information of the map opened
// last: the platform gave none at the open.
bool s_openMapInfoMissing = false;

// Replaces the session's map information with a fresh copy from the
// platform: none while no map is open.
void RefreshMapInfo() {
  if (Dispatcher::m_pMap != nullptr) QXwFreeMapInfo(Dispatcher::m_pMap);
  Dispatcher::SetMap(QXwGetMapInfo());
}

// Takes the open map's information afresh, decides location tracking for
// it and synchronizes its Location ID fields when it is tracked. False when
// the platform gives no copy.
bool TakeOpenMapInfo() {
  RefreshMapInfo();
  Dispatcher::m_thisQxwSessionEnablesLocationTracking = Dispatcher::ShouldEnableLocationTracking(
      Dispatcher::m_pMap, Dispatcher::m_mapNameForLocationTracking);
  Dispatcher::SynchronizeLocationTrackingIfNeeded();
  return Dispatcher::m_pMap != nullptr;
}

// The object ids of an event's list, in order; none without a list.
std::vector<QXwObjectId> ObjectIds(const QXwObjectList* pObjects) {
  std::vector<QXwObjectId> ids;
  for (int i = 0; pObjects != nullptr && i < pObjects->count; ++i) {
    ids.push_back(pObjects->objects[i].object_id);
  }
  return ids;
}

}  // namespace

void QxwEventDispatcher::EndSessionCB(void*, int, QXwBoolean) {
  SKIFF_TRACE("QxwEventDispatcher::EndSessionCB");
  skiff::DispatcherVerbose("EndSessionCB\n");
  // A normal and an abnormal end alike. The platform session goes first, so
  // Java hears of an end that has happened.
  QXwDone();
  m_sessionEnded = true;
  CallVoid(skiff::jni::AttachedEnv(), Peer(), m_endSessionCB);
  CloseFieldInfoCache();
  ScopingCache::CloseScopeCache();
}

void QxwEventDispatcher::MapOpenCB(void*, int, QXwMapInfo* pMap, QXwFieldBindList*) {
  SKIFF_TRACE("QxwEventDispatcher::MapOpenCB");
  skiff::DispatcherVerbose("MapOpenCB\n");
  if (pMap == nullptr) return;
  s_openMapInfoMissing = !TakeOpenMapInfo();
  // Client threads ask for this root submap also while the copy is missing.
  if (s_openMapInfoMissing) PublishRootSubmapId(pMap->root_submap_id);
  // Java has the root submap's contents before it hears that the map is open.
  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  GetSubmapAndSymbols(pMap->root_submap_id);
  LocalRef<jstring> mapName(pEnv, mb2jstring(pEnv, pMap->map_name));
  CallVoid(pEnv, Peer(), m_mapOpenCB, mapName.get(),
           static_cast<jboolean>(pMap->permissions == QXW_MAP_READ_ONLY),
           static_cast<jint>(pMap->root_submap_id));
}

void QxwEventDispatcher::MapCloseCB(void*, int, QXwMapInfo* pMap, time_t) {
  SKIFF_TRACE("QxwEventDispatcher::MapCloseCB");
  skiff::DispatcherVerbose("MapCloseCB\n");
  if (pMap != nullptr) {
    JNIEnv* pEnv = skiff::jni::AttachedEnv();
    LocalRef<jstring> mapName(pEnv, mb2jstring(pEnv, pMap->map_name));
    CallVoid(pEnv, Peer(), m_mapCloseCB, mapName.get(), static_cast<jint>(pMap->root_submap_id));
  }
  RefreshMapInfo();
  s_openMapInfoMissing = false;
  // Last: the platform may close the map once it is acknowledged.
  QXwAckMapClose(pMap, 0);
}

void QxwEventDispatcher::TakeMissingMapInfo() {
  SKIFF_TRACE("QxwEventDispatcher::TakeMissingMapInfo");
  if (s_openMapInfoMissing) s_openMapInfoMissing = !TakeOpenMapInfo();
}

void QxwEventDispatcher::SynchronizeLocationTrackingIfNeeded() {
  SKIFF_TRACE("QxwEventDispatcher::SynchronizeLocationTrackingIfNeeded");
  if (!m_thisQxwSessionEnablesLocationTracking) return;
  // The locations first: a network's location may itself have moved.
  if (m_doSyncLocationIDFieldInSubLocations) NSP::SynchronizeLocationIDFieldForSubLocations(m_pMap);
  if (m_doSyncLocationIDFieldInNetworks) NSP::SynchronizeLocationIDFieldForNetworks(m_pMap);
}

skiff::ObjectFieldValueListPtr QxwEventDispatcher::GetTopMNodeIdFieldValueList(
    const QXwObjectList* pObjectList) {
  SKIFF_TRACE("QxwEventDispatcher::GetTopMNodeIdFieldValueList");
  std::vector<QXwObjectId> objectIds = ObjectIds(pObjectList);
  QXwObjectIdList idList{static_cast<int>(objectIds.size()), objectIds.data()};
  return skiff::ObjectFieldValueListPtr(QXwDbGetFieldValuesByObjects(&idList, s_TopMNodeIdFieldId));
}

void QxwEventDispatcher::CreateInterfaceObjectsCB(void*, int, QXwMapInfo*,
                                                  QXwObjectList* pObjects) {
  SKIFF_TRACE("QxwEventDispatcher::CreateInterfaceObjectsCB");
  skiff::DispatcherVerbose("QxwEventDispatcher::CreateInterfaceObjectsCB\n");
  // Whether locations are tracked does not matter here.
  if (!m_doInvokeJavaCallbacksForScopingUpdates) return;
  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  skiff::ObjectFieldValueListPtr nodeIds = GetTopMNodeIdFieldValueList(pObjects);
  if (nodeIds == nullptr) return;
  const int asked = pObjects != nullptr ? pObjects->count : 0;
  if (nodeIds->count != asked) {
    std::fprintf(stderr,
                 "QxwEventDispatcher::CreateInterfaceObjectsCB problem encountered with "
                 "GetTopMNodeIdFieldValueList .. asked for %d objects but got %d back\n",
                 asked, nodeIds->count);
  }
  // The interfaces that belong to a node, and those nodes, slot by slot;
  // an interface without a node leaves no gap.
  std::vector<QXwObjectId> interfaces;
  std::vector<QXwObjectId> nodes;
  for (int i = 0; i < nodeIds->count; ++i) {
    const QXwObjectField& entry = nodeIds->objects[i];
    std::optional<int> node = skiff::IntegerValue(entry.field_value);
    if (!node) continue;
    interfaces.push_back(entry.object_id);
    nodes.push_back(static_cast<QXwObjectId>(*node));
  }
  if (interfaces.empty()) return;
  LocalRef<jintArray> interfaceArray = skiff::jni::IntArrayOfIds(pEnv, interfaces);
  LocalRef<jintArray> nodeArray = skiff::jni::IntArrayOfIds(pEnv, nodes);
  if (!interfaceArray || !nodeArray) return;
  CallVoid(pEnv, Peer(), m_scopingInterfacesCreatedCB, interfaceArray.get(), nodeArray.get());
}

void QxwEventDispatcher::DeleteInterfaceObjectsCB(void*, int, QXwMapInfo*,
                                                  QXwObjectList* pObjects) {
  SKIFF_TRACE("QxwEventDispatcher::DeleteInterfaceObjectsCB");
  skiff::DispatcherVerbose("QxwEventDispatcher::DeleteInterfaceObjectsCB\n");
  if (!m_doInvokeJavaCallbacksForScopingUpdates) return;
  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  LocalRef<jintArray> interfaceArray = skiff::jni::IntArrayOfIds(pEnv, ObjectIds(pObjects));
  if (!interfaceArray) return;
  CallVoid(pEnv, Peer(), m_scopingInterfacesDeletedCB, interfaceArray.get());
}
