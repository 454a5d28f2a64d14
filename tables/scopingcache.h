// ScopingCache: selection name -> object id -> child submap id, remembered for
// a whole map session, so that well-known objects (such as "IP Internet") and
// the Java side's root objects are resolved by the platform once.
#ifndef SKIFF_TABLES_SCOPINGCACHE_H_
#define SKIFF_TABLES_SCOPINGCACHE_H_

#include <memory>

#include "platform/qxwrecords.h"

class ObjectIdToChildSubmapIdHashtable;
class SelectionNameToObjectIdHashtable;

// Static members only. Every answer of 0 means "not known" and leaves no
// entry behind. Lookups while the cache is closed answer 0 and ask nothing.
class ScopingCache {
 public:
  ScopingCache() = delete;

  // Makes both tables, empty. Tables of an earlier open are discarded.
  static void OpenScopeCache();
  // Destroys both tables; does nothing when the cache is not open.
  static void CloseScopeCache();
  // Switches the messages on standard error on (non-zero) or off.
  static void SetVerbose(int doUseVerboseMode);

  // The object id of the selection name, or 0. A found id is remembered; an
  // unknown name is asked for again on the next call.
  static QXwObjectId MapSelectionNameToObjectId(const char* selectionName);
  // The object's child submap id, or 0. A non-zero id is remembered. Sets
  // *pObjectHasBeenDeleted to 1 when the platform no longer knows the object,
  // to 0 otherwise.
  static QXwSubmapId MapObjectIdToSubmapId(QXwMapInfo* pMap, QXwObjectId objectId,
                                           int* pObjectHasBeenDeleted);
  // The child submap id of the object with that selection name, or 0. A name
  // whose object has been deleted is forgotten.
  static QXwSubmapId GetChildSubmapId(QXwMapInfo* pMap, const char* selectionName);
  // Forgets the child submap of the object whose child the deleted submap was.
  static void SubmapHasBeenDeleted(QXwSubmapInfo* pSubmapInfo);

 private:
  static int m_doUseVerboseMode;
  // The two tables, present between OpenScopeCache and CloseScopeCache.
  // Neither ever holds 0 as a value.
  static std::unique_ptr<SelectionNameToObjectIdHashtable> m_MapSelectionNameToObjectId;
  static std::unique_ptr<ObjectIdToChildSubmapIdHashtable> m_MapObjectIdToChildSubmapId;
};

#endif  // SKIFF_TABLES_SCOPINGCACHE_H_
