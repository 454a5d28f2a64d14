#include "tables/symbolinfohashtables.h"

#include "bridge/tracescope.h"
#include "platform/qxw.h"
#include "tables/keyedtable.h"

namespace {

// Frees the symbol list of every entry of the table.
void FreeEachSymbolList(_Hash& table) {
  skiff::ForEachEntry(table, [](const _HashItem& item) {
    QXwFreeSymbolList(skiff::ValueOf<QXwSymbolList>(&item));
  });
}

}  // namespace

ObjectSymbolInfoHashtable::ObjectSymbolInfoHashtable()
    : _Hash(skiff::kTableBuckets, skiff::kTableReserved, skiff::kTableReserved,
            skiff::kTableGrowAtLoad) {}

ObjectSymbolInfoHashtable::~ObjectSymbolInfoHashtable() {
  SKIFF_TRACE("ObjectSymbolInfoHashtable::~ObjectSymbolInfoHashtable");
  FreeEachSymbolList(*this);
}

QXwSymbolList* ObjectSymbolInfoHashtable::GetSymbolList(QXwMapInfo* pMap, QXwObjectId objectId) {
  SKIFF_TRACE("ObjectSymbolInfoHashtable::GetSymbolList");
  if (_HashItem* item = find(objectId)) return skiff::ValueOf<QXwSymbolList>(item);
  QXwSymbolList* pSymbolList = QXwGetSymbolsByObject(pMap, objectId);
  if (pSymbolList != nullptr) Insert(objectId, pSymbolList);
  return pSymbolList;
}

void ObjectSymbolInfoHashtable::Insert(QXwObjectId objectId, QXwSymbolList* pSymbolList) {
  insert(objectId, skiff::AsWord(pSymbolList));
}

SubmapSymbolInfoHashtable::SubmapSymbolInfoHashtable()
    : _Hash(skiff::kTableBuckets, skiff::kTableReserved, skiff::kTableReserved,
            skiff::kTableGrowAtLoad) {}

SubmapSymbolInfoHashtable::~SubmapSymbolInfoHashtable() {
  SKIFF_TRACE("SubmapSymbolInfoHashtable::~SubmapSymbolInfoHashtable");
  FreeEachSymbolList(*this);
}

QXwSymbolList* SubmapSymbolInfoHashtable::GetSymbolList(QXwMapInfo* pMap, QXwSubmapId submapId,
                                                        QXwPlaneType plane, const char* appName) {
  SKIFF_TRACE("SubmapSymbolInfoHashtable::GetSymbolList");
  if (_HashItem* item = find(submapId)) return skiff::ValueOf<QXwSymbolList>(item);
  QXwSymbolList* pSymbolList = QXwListSymbols(pMap, submapId, plane, appName);
  if (pSymbolList != nullptr) Insert(submapId, pSymbolList);
  return pSymbolList;
}

void SubmapSymbolInfoHashtable::Insert(QXwSubmapId submapId, QXwSymbolList* pSymbolList) {
  insert(submapId, skiff::AsWord(pSymbolList));
}
