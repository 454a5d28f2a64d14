// A cache of submap records: submap id -> QXwSubmapInfo, fetched from the
// platform on a miss.
#ifndef SKIFF_TABLES_SUBMAPINFOHASHTABLE_H_
#define SKIFF_TABLES_SUBMAPINFOHASHTABLE_H_

#include "platform/qxhash.h"
#include "platform/qxwrecords.h"

// The records belong to the table: callers neither free them nor use them
// after the table is gone. A submap the platform does not answer for is not
// cached and is asked for again on the next lookup.
class QXwSubmapInfoHashtable : public _Hash {
 public:
  QXwSubmapInfoHashtable();
  // Frees every cached record once.
  ~QXwSubmapInfoHashtable() override;

  // The submap's record, or null. Sets submapWasAlreadyInCache to 1 when the
  // record was cached already, and to 0 when the platform was asked.
  QXwSubmapInfo* GetSubmapInfo(QXwMapInfo* pMap, QXwSubmapId submapId,
                               int& submapWasAlreadyInCache);
  // The submap's record, or null.
  QXwSubmapInfo* GetSubmapInfo(QXwMapInfo* pMap, QXwSubmapId submapId);

 private:
  void Insert(QXwSubmapId submapId, QXwSubmapInfo* pSubmapInfo);
};

#endif  // SKIFF_TABLES_SUBMAPINFOHASHTABLE_H_
