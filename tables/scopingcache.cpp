#include "tables/scopingcache.h"
#include "platform/recordowners.h"

#include <stdio.h>

#include <memory>

#include "bridge/tracescope.h"
#include "platform/qxcommon.h"
#include "platform/qxw.h"
#include "platform/qxwdb.h"
#include "tables/childsubmapidhashtable.h"
#include "tables/selectionnametoobjectidhashtable.h"

int ScopingCache::m_doUseVerboseMode = 0;

std::unique_ptr<SelectionNameToObjectIdHashtable> ScopingCache::m_MapSelectionNameToObjectId;
std::unique_ptr<ObjectIdToChildSubmapIdHashtable> ScopingCache::m_MapObjectIdToChildSubmapId;

void ScopingCache::OpenScopeCache() {
  SKIFF_TRACE("ScopingCache::OpenScopeCache");
  m_MapSelectionNameToObjectId = std::make_unique<SelectionNameToObjectIdHashtable>();
  m_MapObjectIdToChildSubmapId = std::make_unique<ObjectIdToChildSubmapIdHashtable>();
}

void ScopingCache::CloseScopeCache() {
  SKIFF_TRACE("ScopingCache::CloseScopeCache");
  m_MapSelectionNameToObjectId.reset();
  m_MapObjectIdToChildSubmapId.reset();
}

void ScopingCache::SetVerbose(int doUseVerboseMode) {
  SKIFF_TRACE("ScopingCache::SetVerbose");
  m_doUseVerboseMode = doUseVerboseMode;
}

QXwObjectId ScopingCache::MapSelectionNameToObjectId(const char* selectionName) {
  SKIFF_TRACE("ScopingCache::MapSelectionNameToObjectId");
  if (m_MapSelectionNameToObjectId == nullptr) return 0;
  QXwObjectId objectId = m_MapSelectionNameToObjectId->Get(selectionName);
  if (objectId != 0) return objectId;

  objectId = QXwDbSelectionNameToObjectId(selectionName);
  if (m_doUseVerboseMode) {
    fprintf(stderr,
            "ScopingCache::MapSelectionNameToObjectId QXwDbSelectionNameToObjectId() call "
            "returned %d\n",
            static_cast<int>(objectId));
  }
  if (objectId != 0) {
    m_MapSelectionNameToObjectId->Put(skiff::OwnedText(_QXstrdup(selectionName)), objectId);
  }
  return objectId;
}

QXwSubmapId ScopingCache::MapObjectIdToSubmapId(QXwMapInfo* pMap, QXwObjectId objectId,
                                                int* pObjectHasBeenDeleted) {
  SKIFF_TRACE("ScopingCache::MapObjectIdToSubmapId");
  *pObjectHasBeenDeleted = 0;
  if (objectId == 0 || m_MapObjectIdToChildSubmapId == nullptr) return 0;
  QXwSubmapId submapId = m_MapObjectIdToChildSubmapId->Get(objectId);
  if (submapId != 0) return submapId;

  skiff::ObjectInfoPtr pObjectInfo(QXwGetObjectInfo(pMap, objectId));
  if (m_doUseVerboseMode) {
    fprintf(stderr, "ScopingCache::MapObjectIdToSubmapId QXwGetObjectInfo() call returned %d\n",
            pObjectInfo != nullptr ? 1 : 0);
  }
  if (pObjectInfo == nullptr) {
    *pObjectHasBeenDeleted = 1;
    return 0;
  }
  submapId = pObjectInfo->child_submap_id;
  if (submapId != 0) m_MapObjectIdToChildSubmapId->Put(objectId, submapId);
  return submapId;
}

QXwSubmapId ScopingCache::GetChildSubmapId(QXwMapInfo* pMap, const char* selectionName) {
  SKIFF_TRACE("ScopingCache::GetChildSubmapId");
  QXwSubmapId submapId = 0;
  QXwObjectId objectId = MapSelectionNameToObjectId(selectionName);
  if (objectId != 0) {
    int objectHasBeenDeleted = 0;
    submapId = MapObjectIdToSubmapId(pMap, objectId, &objectHasBeenDeleted);
    if (objectHasBeenDeleted) m_MapSelectionNameToObjectId->Remove(selectionName);
  }
  if (m_doUseVerboseMode) {
    fprintf(stderr, "ScopingCache::GetChildSubmapId determined that the submapId is %d\n",
            static_cast<int>(submapId));
  }
  return submapId;
}

void ScopingCache::SubmapHasBeenDeleted(QXwSubmapInfo* pSubmapInfo) {
  SKIFF_TRACE("ScopingCache::SubmapHasBeenDeleted");
  if (pSubmapInfo == nullptr || m_MapObjectIdToChildSubmapId == nullptr) return;
  m_MapObjectIdToChildSubmapId->Remove(pSubmapInfo->parent_object_id);
}
