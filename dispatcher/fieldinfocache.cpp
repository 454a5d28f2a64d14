#include "dispatcher/fieldinfocache.h"
#include "platform/recordowners.h"

#include <stdio.h>
#include <stdlib.h>

#include "bridge/tracescope.h"
#include "platform/qxcommon.h"
#include "platform/qxwdb.h"
#include "tables/keyedtable.h"

namespace skiff {

void FieldInfoListCopyDeleter::operator()(QXwFieldList* pFieldList) const {
  for (int i = 0; i < pFieldList->count; ++i) free(pFieldList->field_list[i].field_name);
  delete[] pFieldList->field_list;
  delete pFieldList;
}

}  // namespace skiff

namespace {

// The cache's two tables, present while it is open.
std::unique_ptr<QXwdbFieldInfoHashtable> s_pQXwdbFieldInfoHashtable;
std::unique_ptr<QXwdbEnumConstantsHashtable> s_pQXwdbEnumConstantsHashtable;

}  // namespace

QXwdbFieldInfoHashtable::QXwdbFieldInfoHashtable()
    : _Hash(skiff::kTableBuckets, skiff::kTableReserved, skiff::kTableReserved,
            skiff::kTableGrowAtLoad) {
  SKIFF_TRACE("QXwdbFieldInfoHashtable::QXwdbFieldInfoHashtable");
  skiff::FieldInfoListPtr pFieldList(QXwDbListFields(0));
  if (pFieldList == nullptr) return;
  for (int i = 0; i < pFieldList->count; ++i) {
    const QXwFieldInfo& fieldInfo = pFieldList->field_list[i];
    if (!isIn(fieldInfo.field_id)) Insert(fieldInfo.field_id, CopyFieldInfo(&fieldInfo));
  }
}

QXwdbFieldInfoHashtable::~QXwdbFieldInfoHashtable() {
  SKIFF_TRACE("QXwdbFieldInfoHashtable::~QXwdbFieldInfoHashtable");
  skiff::ForEachEntry(
      *this, [](const _HashItem& item) { FreeFieldInfo(skiff::ValueOf<QXwFieldInfo>(&item)); });
}

QXwFieldInfo* QXwdbFieldInfoHashtable::GetFieldInfo(QXwFieldId fieldId) {
  SKIFF_TRACE("QXwdbFieldInfoHashtable::GetFieldInfo");
  if (_HashItem* item = find(fieldId)) return skiff::ValueOf<QXwFieldInfo>(item);

  skiff::FieldInfoPtr pPlatformInfo(QXwDbGetFieldInfo(fieldId));
  if (pPlatformInfo == nullptr) {
    fprintf(stderr, "QXwDbGetFieldInfo call failed for field %d", static_cast<int>(fieldId));
    return nullptr;
  }
  // Cached under the id the platform answered with; an entry it already has
  // is kept, never replaced.
  if (_HashItem* item = find(pPlatformInfo->field_id)) return skiff::ValueOf<QXwFieldInfo>(item);
  QXwFieldInfo* pFieldInfo = CopyFieldInfo(pPlatformInfo.get());
  Insert(pFieldInfo->field_id, pFieldInfo);
  return pFieldInfo;
}

skiff::FieldInfoListCopyPtr QXwdbFieldInfoHashtable::GetFieldList() {
  SKIFF_TRACE("QXwdbFieldInfoHashtable::GetFieldList");
  skiff::FieldInfoListCopyPtr pFieldList(new QXwFieldList{0, nullptr});
  if (size() == 0) return pFieldList;
  pFieldList->field_list = new QXwFieldInfo[size()];
  skiff::ForEachEntry(*this, [&](const _HashItem& item) {
    CopyFieldInfo(&pFieldList->field_list[pFieldList->count++],
                  skiff::ValueOf<QXwFieldInfo>(&item));
  });
  return pFieldList;
}

QXwFieldInfo* QXwdbFieldInfoHashtable::CopyFieldInfo(const QXwFieldInfo* pFieldInfo) {
  SKIFF_TRACE("QXwdbFieldInfoHashtable::CopyFieldInfo");
  QXwFieldInfo* pCopy = new QXwFieldInfo;
  CopyFieldInfo(pCopy, pFieldInfo);
  return pCopy;
}

void QXwdbFieldInfoHashtable::CopyFieldInfo(QXwFieldInfo* pTarget, const QXwFieldInfo* pSource) {
  SKIFF_TRACE("QXwdbFieldInfoHashtable::CopyFieldInfo");
  pTarget->field_id = pSource->field_id;
  pTarget->field_name = _QXstrdup(pSource->field_name);
  pTarget->field_type = pSource->field_type;
  pTarget->field_flags = pSource->field_flags;
}

void QXwdbFieldInfoHashtable::FreeFieldInfo(QXwFieldInfo* pFieldInfo) {
  SKIFF_TRACE("QXwdbFieldInfoHashtable::FreeFieldInfo");
  if (pFieldInfo == nullptr) return;
  free(pFieldInfo->field_name);
  delete pFieldInfo;
}

void QXwdbFieldInfoHashtable::Insert(QXwFieldId fieldId, QXwFieldInfo* pFieldInfo) {
  insert(fieldId, skiff::AsWord(pFieldInfo));
}

QXwdbEnumConstantsHashtable::QXwdbEnumConstantsHashtable()
    : _Hash(skiff::kTableBuckets, skiff::kTableReserved, skiff::kTableReserved,
            skiff::kTableGrowAtLoad) {}

QXwdbEnumConstantsHashtable::~QXwdbEnumConstantsHashtable() {
  SKIFF_TRACE("QXwdbEnumConstantsHashtable::~QXwdbEnumConstantsHashtable");
  skiff::ForEachEntry(*this, [](const _HashItem& item) {
    QXwDbFreeEnumConstants(skiff::ValueOf<QXwEnumConstants>(&item));
  });
}

QXwEnumConstants* QXwdbEnumConstantsHashtable::GetFieldEnumConstants(QXwFieldId fieldId) {
  SKIFF_TRACE("QXwdbEnumConstantsHashtable::GetFieldEnumConstants");
  if (_HashItem* item = find(fieldId)) return skiff::ValueOf<QXwEnumConstants>(item);
  QXwEnumConstants* pEnumConstants = QXwDbGetEnumConstants(fieldId);
  if (pEnumConstants != nullptr) Insert(fieldId, pEnumConstants);
  return pEnumConstants;
}

void QXwdbEnumConstantsHashtable::Insert(QXwFieldId fieldId, QXwEnumConstants* pEnumConstants) {
  insert(fieldId, skiff::AsWord(pEnumConstants));
}

void OpenFieldInfoCache() {
  SKIFF_TRACE("OpenFieldInfoCache");
  s_pQXwdbFieldInfoHashtable = std::make_unique<QXwdbFieldInfoHashtable>();
  s_pQXwdbEnumConstantsHashtable = std::make_unique<QXwdbEnumConstantsHashtable>();
}

void CloseFieldInfoCache() {
  SKIFF_TRACE("CloseFieldInfoCache");
  s_pQXwdbFieldInfoHashtable.reset();
  s_pQXwdbEnumConstantsHashtable.reset();
}

QXwFieldInfo* GetFieldInfo(QXwFieldId fieldId) {
  SKIFF_TRACE("GetFieldInfo");
  return OpenFieldInfoTables().Info(fieldId);
}

QXwFieldInfo* GetFieldInfo(QXwFieldId fieldId, bool* pFieldWasAlreadyInCache) {
  SKIFF_TRACE("GetFieldInfo");
  *pFieldWasAlreadyInCache = true;
  if (s_pQXwdbFieldInfoHashtable == nullptr) return nullptr;
  int sizeBefore = s_pQXwdbFieldInfoHashtable->size();
  QXwFieldInfo* pFieldInfo = s_pQXwdbFieldInfoHashtable->GetFieldInfo(fieldId);
  *pFieldWasAlreadyInCache = s_pQXwdbFieldInfoHashtable->size() == sizeBefore;
  return pFieldInfo;
}

QXwFieldInfo* FieldInfoTables::Info(QXwFieldId fieldId) const {
  return infos != nullptr ? infos->GetFieldInfo(fieldId) : nullptr;
}

const char* FieldInfoTables::EnumName(QXwFieldId fieldId, int enumValue) const {
  QXwEnumConstants* pEnumConstants =
      enums != nullptr ? enums->GetFieldEnumConstants(fieldId) : nullptr;
  if (pEnumConstants == nullptr || enumValue < 0 || enumValue >= pEnumConstants->count) {
    return nullptr;
  }
  return pEnumConstants->names[enumValue];
}

FieldInfoTables OpenFieldInfoTables() {
  return {s_pQXwdbFieldInfoHashtable.get(), s_pQXwdbEnumConstantsHashtable.get()};
}

const char* GetEnumValueAsString(QXwFieldId fieldId, int enumValue) {
  SKIFF_TRACE("GetEnumValueAsString");
  return OpenFieldInfoTables().EnumName(fieldId, enumValue);
}

QXwEnumConstants* GetEnumConstants(QXwFieldId fieldId) {
  SKIFF_TRACE("GetEnumConstants");
  if (s_pQXwdbEnumConstantsHashtable == nullptr) return nullptr;
  return s_pQXwdbEnumConstantsHashtable->GetFieldEnumConstants(fieldId);
}

skiff::FieldInfoListCopyPtr GetFieldList() {
  SKIFF_TRACE("GetFieldList");
  if (s_pQXwdbFieldInfoHashtable == nullptr) return nullptr;
  return s_pQXwdbFieldInfoHashtable->GetFieldList();
}
