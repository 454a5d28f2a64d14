// What the keyed tables share: the arguments of their _Hash base, reading an
// entry's value as a typed pointer, and visiting every entry once.
#ifndef SKIFF_TABLES_KEYEDTABLE_H_
#define SKIFF_TABLES_KEYEDTABLE_H_

#include <stdlib.h>

#include <memory>

#include "platform/qxhash.h"

namespace skiff {

// Every keyed table constructs its base as
// _Hash(kTableBuckets, kTableReserved, kTableReserved, kTableGrowAtLoad).
constexpr int kTableBuckets = 50;
constexpr int kTableReserved = 3;
constexpr float kTableGrowAtLoad = 0.333f;

// Text allocated with malloc (as _QXstrdup makes it), released with free.
struct FreeText {
  void operator()(char* text) const { free(text); }
};
using OwnedText = std::unique_ptr<char, FreeText>;

// A pointer as a table word.
template <class T>
unsigned long AsWord(T* pointer) {
  return reinterpret_cast<unsigned long>(pointer);
}

// The value of `item` read as a pointer to T; null when there is no entry.
template <class T>
T* ValueOf(const _HashItem* item) {
  return item != nullptr ? reinterpret_cast<T*>(item->data()) : nullptr;
}

// Calls `visit(entry)` once for every entry of `table`. The table is marked
// as being iterated meanwhile; `visit` must not insert or remove entries.
template <class Visit>
void ForEachEntry(_Hash& table, Visit visit) {
  _HashIter iter(table);
  for (_HashItem* item = iter(); item != nullptr; item = ++iter) visit(*item);
}

}  // namespace skiff

#endif  // SKIFF_TABLES_KEYEDTABLE_H_
