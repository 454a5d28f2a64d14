// Submap id -> the set of object ids of the locations above that submap.
#ifndef SKIFF_TABLES_PARENTLOCATIONSHASHTABLE_H_
#define SKIFF_TABLES_PARENTLOCATIONSHASHTABLE_H_

#include <memory>

#include "platform/qxhash.h"
#include "platform/qxwrecords.h"
#include "tables/idsets.h"

// The table owns the sets it holds; an entry may hold no set.
class ParentLocationsHashtable : public _Hash {
 public:
  ParentLocationsHashtable();
  // Destroys every set held, once; entries without a set are passed over.
  ~ParentLocationsHashtable() override;

  // Stores the set (which may be null) under the submap; the table owns it
  // from now on. A set stored earlier under the same submap is destroyed.
  void Insert(QXwSubmapId submapId,
              std::unique_ptr<QXwObjectIdHashtable> pParentLocationObjectIdHashtable);
  // The set stored under the submap, or null (no entry, or an entry without
  // a set). The set stays the table's.
  QXwObjectIdHashtable* GetParentLocations(QXwSubmapId submapId);
};

#endif  // SKIFF_TABLES_PARENTLOCATIONSHASHTABLE_H_
