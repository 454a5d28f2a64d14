#include "tables/selectionnametoobjectidhashtable.h"

#include <stdlib.h>
#include <string.h>

#include "bridge/tracescope.h"
#include "platform/qxcommon.h"

SelectionNameToObjectIdHashtable::SelectionNameToObjectIdHashtable()
    : _Hash(skiff::kTableBuckets, skiff::kTableReserved, skiff::kTableReserved,
            skiff::kTableGrowAtLoad) {}

SelectionNameToObjectIdHashtable::~SelectionNameToObjectIdHashtable() {
  SKIFF_TRACE("SelectionNameToObjectIdHashtable::~SelectionNameToObjectIdHashtable");
  skiff::ForEachEntry(*this,
                      [](const _HashItem& item) { free(reinterpret_cast<char*>(item.key())); });
}

void SelectionNameToObjectIdHashtable::Put(skiff::OwnedText selectionName, QXwObjectId objectId) {
  SKIFF_TRACE("SelectionNameToObjectIdHashtable::Put");
  if (_HashItem* item = find(skiff::AsWord(selectionName.get()))) {
    item->_data = objectId;
    return;
  }
  insert(skiff::AsWord(selectionName.release()), objectId);
}

QXwObjectId SelectionNameToObjectIdHashtable::Get(const char* selectionName) {
  SKIFF_TRACE("SelectionNameToObjectIdHashtable::Get");
  _HashItem* item = find(skiff::AsWord(selectionName));
  return item != nullptr ? static_cast<QXwObjectId>(item->data()) : 0;
}

void SelectionNameToObjectIdHashtable::Remove(const char* selectionName) {
  SKIFF_TRACE("SelectionNameToObjectIdHashtable::Remove");
  _HashItem* item = find(skiff::AsWord(selectionName));
  if (item == nullptr) return;
  // The table's copy is released on return, after remove() has compared it.
  skiff::OwnedText keyCopy(reinterpret_cast<char*>(item->key()));
  remove(skiff::AsWord(selectionName));
}

unsigned int SelectionNameToObjectIdHashtable::hash(unsigned long key) {
  return _QXhash(reinterpret_cast<const char*>(key));
}

int SelectionNameToObjectIdHashtable::keyCmp(unsigned long tabKey, unsigned long searchKey) {
  return strcmp(reinterpret_cast<const char*>(tabKey), reinterpret_cast<const char*>(searchKey));
}
