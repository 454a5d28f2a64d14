#include "tables/parentlocationshashtable.h"

#include "bridge/tracescope.h"
#include "tables/keyedtable.h"

ParentLocationsHashtable::ParentLocationsHashtable()
    : _Hash(skiff::kTableBuckets, skiff::kTableReserved, skiff::kTableReserved,
            skiff::kTableGrowAtLoad) {}

ParentLocationsHashtable::~ParentLocationsHashtable() {
  SKIFF_TRACE("ParentLocationsHashtable::~ParentLocationsHashtable");
  skiff::ForEachEntry(
      *this, [](const _HashItem& item) { delete skiff::ValueOf<QXwObjectIdHashtable>(&item); });
}

void ParentLocationsHashtable::Insert(
    QXwSubmapId submapId, std::unique_ptr<QXwObjectIdHashtable> pParentLocationObjectIdHashtable) {
  SKIFF_TRACE("ParentLocationsHashtable::Insert");
  if (_HashItem* item = find(submapId)) delete skiff::ValueOf<QXwObjectIdHashtable>(item);
  insert(submapId, skiff::AsWord(pParentLocationObjectIdHashtable.release()));
}

QXwObjectIdHashtable* ParentLocationsHashtable::GetParentLocations(QXwSubmapId submapId) {
  SKIFF_TRACE("ParentLocationsHashtable::GetParentLocations");
  return skiff::ValueOf<QXwObjectIdHashtable>(find(submapId));
}
