// Selection name -> object id, keyed by the text of the name.
#ifndef SKIFF_TABLES_SELECTIONNAMETOOBJECTIDHASHTABLE_H_
#define SKIFF_TABLES_SELECTIONNAMETOOBJECTIDHASHTABLE_H_

#include "platform/qxhash.h"
#include "platform/qxwrecords.h"
#include "tables/keyedtable.h"

// Two names are the same key when their texts are equal byte for byte. The
// table owns the key copies it holds.
class SelectionNameToObjectIdHashtable : public _Hash {
 public:
  SelectionNameToObjectIdHashtable();
  // Releases every key copy once.
  ~SelectionNameToObjectIdHashtable() override;

  // Stores the object id under the name; the table takes the copy of the
  // name. When the name is held already, its id is replaced and the copy
  // given here is released.
  void Put(skiff::OwnedText selectionName, QXwObjectId objectId);
  // The object id stored under the name, or 0.
  QXwObjectId Get(const char* selectionName);
  // Removes the name's entry, if any, and releases its key copy.
  void Remove(const char* selectionName);

 private:
  unsigned int hash(unsigned long key) override;
  int keyCmp(unsigned long tabKey, unsigned long searchKey) override;
};

#endif  // SKIFF_TABLES_SELECTIONNAMETOOBJECTIDHASHTABLE_H_
