// Sets of identifiers on the platform's keyed table: each id is both the key
// and the value of its entry, and is held once however often it is added.
#ifndef SKIFF_TABLES_IDSETS_H_
#define SKIFF_TABLES_IDSETS_H_

#include <memory>

#include "platform/qxhash.h"
#include "platform/qxwrecords.h"

// A set of submap ids.
class SubmapHashtable : public _Hash {
 public:
  SubmapHashtable();

  // Adds the id to the set.
  void Add(QXwSubmapId submapId);
  // Adds the id unless it is held already (the same as Add).
  void AddIfNeeded(QXwSubmapId submapId);
  // True when the set holds the id.
  bool Contains(QXwSubmapId submapId);
};

// A set of object ids.
class QXwObjectIdHashtable : public _Hash {
 public:
  QXwObjectIdHashtable();

  // Adds the id to the set.
  void Add(QXwObjectId objectId);
  // True when the set holds the id.
  bool Contains(QXwObjectId objectId);
  // The number of ids held.
  int GetCount();
  // A new array of the GetCount() ids held, in iteration order; null (and
  // nothing allocated) when the set is empty.
  std::unique_ptr<QXwObjectId[]> GetObjectIds();
};

#endif  // SKIFF_TABLES_IDSETS_H_
