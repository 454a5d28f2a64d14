// Maps from an object id to the id of the object's child submap: a plain map
// filled by its user, and a cache that asks the platform on a miss.
#ifndef SKIFF_TABLES_CHILDSUBMAPIDHASHTABLE_H_
#define SKIFF_TABLES_CHILDSUBMAPIDHASHTABLE_H_

#include "platform/qxhash.h"
#include "platform/qxwrecords.h"

// Object id -> child submap id. Holds plain ids; owns nothing.
class ObjectIdToChildSubmapIdHashtable : public _Hash {
 public:
  ObjectIdToChildSubmapIdHashtable();

  // Stores the object's child submap id, replacing any earlier one.
  void Put(QXwObjectId objectId, QXwSubmapId childSubmapId);
  // The stored child submap id, or 0 when the object has no entry.
  QXwSubmapId Get(QXwObjectId objectId);
  // Removes the object's entry, if any.
  void Remove(QXwObjectId objectId);
};

// Object id -> child submap id, fetched from the platform on a miss.
class QXwChildSubmapIdHashtable {
 public:
  // The object's child submap id, or 0. A stored 0 reads as a miss, so an
  // object without a child submap (or one the platform does not know) is
  // asked for again on every call.
  QXwSubmapId GetChildSubmapId(QXwMapInfo* pMap, QXwObjectId objectId);

 private:
  ObjectIdToChildSubmapIdHashtable m_objectIdToChildSubmapIdHashtable;
};

#endif  // SKIFF_TABLES_CHILDSUBMAPIDHASHTABLE_H_
