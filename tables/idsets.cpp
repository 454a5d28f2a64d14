#include "tables/idsets.h"

#include "bridge/tracescope.h"
#include "tables/keyedtable.h"

SubmapHashtable::SubmapHashtable()
    : _Hash(skiff::kTableBuckets, skiff::kTableReserved, skiff::kTableReserved,
            skiff::kTableGrowAtLoad) {}

void SubmapHashtable::Add(QXwSubmapId submapId) {
  SKIFF_TRACE("SubmapHashtable::Add");
  insert(submapId, submapId);
}

void SubmapHashtable::AddIfNeeded(QXwSubmapId submapId) {
  SKIFF_TRACE("SubmapHashtable::AddIfNeeded");
  insert(submapId, submapId);
}

bool SubmapHashtable::Contains(QXwSubmapId submapId) {
  SKIFF_TRACE("SubmapHashtable::Contains");
  return isIn(submapId) != 0;
}

QXwObjectIdHashtable::QXwObjectIdHashtable()
    : _Hash(skiff::kTableBuckets, skiff::kTableReserved, skiff::kTableReserved,
            skiff::kTableGrowAtLoad) {}

void QXwObjectIdHashtable::Add(QXwObjectId objectId) {
  SKIFF_TRACE("QXwObjectIdHashtable::Add");
  insert(objectId, objectId);
}

bool QXwObjectIdHashtable::Contains(QXwObjectId objectId) {
  SKIFF_TRACE("QXwObjectIdHashtable::Contains");
  return isIn(objectId) != 0;
}

int QXwObjectIdHashtable::GetCount() {
  SKIFF_TRACE("QXwObjectIdHashtable::GetCount");
  return size();
}

std::unique_ptr<QXwObjectId[]> QXwObjectIdHashtable::GetObjectIds() {
  SKIFF_TRACE("QXwObjectIdHashtable::GetObjectIds");
  if (size() == 0) return nullptr;
  std::unique_ptr<QXwObjectId[]> objectIds(new QXwObjectId[size()]);
  int next = 0;
  skiff::ForEachEntry(*this, [&](const _HashItem& item) {
    objectIds[next++] = static_cast<QXwObjectId>(item.data());
  });
  return objectIds;
}
