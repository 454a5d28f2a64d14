// Caches of symbol lists, fetched from the platform on a miss: all symbols of
// an object, and the symbols on a submap.
#ifndef SKIFF_TABLES_SYMBOLINFOHASHTABLES_H_
#define SKIFF_TABLES_SYMBOLINFOHASHTABLES_H_

#include "platform/qxhash.h"
#include "platform/qxwrecords.h"

// In both tables the lists belong to the table: callers neither free them nor
// use them after the table is gone. A key the platform does not answer for is
// not cached and is asked for again on the next lookup.

// Object id -> every symbol of the object.
class ObjectSymbolInfoHashtable : public _Hash {
 public:
  ObjectSymbolInfoHashtable();
  // Frees every cached list once.
  ~ObjectSymbolInfoHashtable() override;

  // All symbols of the object, or null.
  QXwSymbolList* GetSymbolList(QXwMapInfo* pMap, QXwObjectId objectId);

 private:
  void Insert(QXwObjectId objectId, QXwSymbolList* pSymbolList);
};

// Submap id -> the symbols on the submap.
class SubmapSymbolInfoHashtable : public _Hash {
 public:
  SubmapSymbolInfoHashtable();
  // Frees every cached list once.
  ~SubmapSymbolInfoHashtable() override;

  // The symbols on the submap in the given planes and of the given
  // application (none or "" for any), or null. The cache is keyed by submap
  // alone: a later lookup of the same submap returns the first list, whatever
  // plane and application it names.
  QXwSymbolList* GetSymbolList(QXwMapInfo* pMap, QXwSubmapId submapId, QXwPlaneType plane,
                               const char* appName);

 private:
  void Insert(QXwSubmapId submapId, QXwSymbolList* pSymbolList);
};

#endif  // SKIFF_TABLES_SYMBOLINFOHASHTABLES_H_
