#include "tables/childsubmapidhashtable.h"
#include "platform/recordowners.h"

#include <memory>

#include "bridge/tracescope.h"
#include "platform/qxw.h"
#include "tables/keyedtable.h"

ObjectIdToChildSubmapIdHashtable::ObjectIdToChildSubmapIdHashtable()
    : _Hash(skiff::kTableBuckets, skiff::kTableReserved, skiff::kTableReserved,
            skiff::kTableGrowAtLoad) {}

void ObjectIdToChildSubmapIdHashtable::Put(QXwObjectId objectId, QXwSubmapId childSubmapId) {
  SKIFF_TRACE("ObjectIdToChildSubmapIdHashtable::Put");
  insert(objectId, childSubmapId);
}

QXwSubmapId ObjectIdToChildSubmapIdHashtable::Get(QXwObjectId objectId) {
  SKIFF_TRACE("ObjectIdToChildSubmapIdHashtable::Get");
  _HashItem* item = find(objectId);
  return item != nullptr ? static_cast<QXwSubmapId>(item->data()) : 0;
}

void ObjectIdToChildSubmapIdHashtable::Remove(QXwObjectId objectId) {
  SKIFF_TRACE("ObjectIdToChildSubmapIdHashtable::Remove");
  remove(objectId);
}

QXwSubmapId QXwChildSubmapIdHashtable::GetChildSubmapId(QXwMapInfo* pMap, QXwObjectId objectId) {
  SKIFF_TRACE("QXwChildSubmapIdHashtable::GetChildSubmapId");
  QXwSubmapId childSubmapId = m_objectIdToChildSubmapIdHashtable.Get(objectId);
  if (childSubmapId != 0) return childSubmapId;

  skiff::ObjectInfoPtr pObjectInfo(QXwGetObjectInfo(pMap, objectId));
  if (pObjectInfo == nullptr) return 0;
  childSubmapId = pObjectInfo->child_submap_id;
  m_objectIdToChildSubmapIdHashtable.Put(objectId, childSubmapId);
  return childSubmapId;
}
