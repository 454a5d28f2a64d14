#include "tables/submapinfohashtable.h"

#include "bridge/tracescope.h"
#include "platform/qxw.h"
#include "tables/keyedtable.h"

QXwSubmapInfoHashtable::QXwSubmapInfoHashtable()
    : _Hash(skiff::kTableBuckets, skiff::kTableReserved, skiff::kTableReserved,
            skiff::kTableGrowAtLoad) {}

QXwSubmapInfoHashtable::~QXwSubmapInfoHashtable() {
  SKIFF_TRACE("QXwSubmapInfoHashtable::~QXwSubmapInfoHashtable");
  skiff::ForEachEntry(*this, [](const _HashItem& item) {
    QXwFreeSubmapInfo(skiff::ValueOf<QXwSubmapInfo>(&item));
  });
}

QXwSubmapInfo* QXwSubmapInfoHashtable::GetSubmapInfo(QXwMapInfo* pMap, QXwSubmapId submapId,
                                                     int& submapWasAlreadyInCache) {
  SKIFF_TRACE("QXwSubmapInfoHashtable::GetSubmapInfo");
  if (_HashItem* item = find(submapId)) {
    submapWasAlreadyInCache = 1;
    return skiff::ValueOf<QXwSubmapInfo>(item);
  }
  submapWasAlreadyInCache = 0;
  QXwSubmapInfo* pSubmapInfo = QXwGetSubmapInfo(pMap, submapId);
  if (pSubmapInfo != nullptr) Insert(submapId, pSubmapInfo);
  return pSubmapInfo;
}

QXwSubmapInfo* QXwSubmapInfoHashtable::GetSubmapInfo(QXwMapInfo* pMap, QXwSubmapId submapId) {
  SKIFF_TRACE("QXwSubmapInfoHashtable::GetSubmapInfo");
  int submapWasAlreadyInCache = 0;
  return GetSubmapInfo(pMap, submapId, submapWasAlreadyInCache);
}

void QXwSubmapInfoHashtable::Insert(QXwSubmapId submapId, QXwSubmapInfo* pSubmapInfo) {
  insert(submapId, skiff::AsWord(pSubmapInfo));
}
