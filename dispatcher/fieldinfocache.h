// The field information cache: descriptions of the object database's fields
// and the constant names of its enumeration fields, kept for a whole platform
// session so that each is fetched from the platform at most once.
//
// All field descriptions are loaded when the cache opens; enumeration
// constants are fetched on first use. Everything here runs on the dispatcher
// thread.
#ifndef SKIFF_DISPATCHER_FIELDINFOCACHE_H_
#define SKIFF_DISPATCHER_FIELDINFOCACHE_H_

#include <memory>

#include "platform/qxhash.h"
#include "platform/qxwrecords.h"

namespace skiff {

// Releases a field list made by the cache: every name, the array, the list.
struct FieldInfoListCopyDeleter {
  void operator()(QXwFieldList* pFieldList) const;
};
using FieldInfoListCopyPtr = std::unique_ptr<QXwFieldList, FieldInfoListCopyDeleter>;

}  // namespace skiff

// Field id -> the field's description. The table holds its own copies of the
// platform's records (each with its own copy of the name); entries are never
// replaced or removed.
class QXwdbFieldInfoHashtable : public _Hash {
 public:
  // Loads every field description the platform lists; stays empty when it
  // lists none.
  QXwdbFieldInfoHashtable();
  // Releases every cached description once.
  ~QXwdbFieldInfoHashtable() override;

  // The field's description (owned by the table), or null. A field not cached
  // yet is asked of the platform and cached; when the platform does not know
  // it, "QXwDbGetFieldInfo call failed for field %d" goes to standard error
  // and nothing is cached.
  QXwFieldInfo* GetFieldInfo(QXwFieldId fieldId);
  // A new list of copies of every cached description, in iteration order.
  skiff::FieldInfoListCopyPtr GetFieldList();

  // A new copy of the record, with its own copy of the name; release it with
  // FreeFieldInfo.
  static QXwFieldInfo* CopyFieldInfo(const QXwFieldInfo* pFieldInfo);
  // Copies the source into the target, duplicating the name.
  static void CopyFieldInfo(QXwFieldInfo* pTarget, const QXwFieldInfo* pSource);
  // Releases a copy made by CopyFieldInfo.
  static void FreeFieldInfo(QXwFieldInfo* pFieldInfo);

 private:
  void Insert(QXwFieldId fieldId, QXwFieldInfo* pFieldInfo);
};

// Field id -> the constant names of an enumeration field, as the platform
// returned them. Only fields for which the platform had constants get an
// entry.
class QXwdbEnumConstantsHashtable : public _Hash {
 public:
  QXwdbEnumConstantsHashtable();
  // Releases every cached record once.
  ~QXwdbEnumConstantsHashtable() override;

  // The field's constants (owned by the table), or null when the platform has
  // none. Asks the platform on a miss; a null answer is not remembered.
  QXwEnumConstants* GetFieldEnumConstants(QXwFieldId fieldId);

 private:
  void Insert(QXwFieldId fieldId, QXwEnumConstants* pEnumConstants);
};

// A pair of tables to describe fields with: the open cache's, or a caller's
// own. A null table answers every lookup with null.
struct FieldInfoTables {
  QXwdbFieldInfoHashtable* infos;
  QXwdbEnumConstantsHashtable* enums;

  // The field's description (owned by the table), or null.
  QXwFieldInfo* Info(QXwFieldId fieldId) const;
  // The name of constant enumValue of the field (the table's text), or null
  // when the field has no constants or the value is outside them.
  const char* EnumName(QXwFieldId fieldId, int enumValue) const;
};

// The open cache's tables; both null while the cache is closed.
FieldInfoTables OpenFieldInfoTables();

// Opens the cache, loading every field description. Tables of an earlier
// open are discarded.
void OpenFieldInfoCache();
// Closes the cache, releasing everything it holds; does nothing when it is
// not open.
void CloseFieldInfoCache();
// The field's description (valid until the cache closes), or null; null while
// the cache is closed.
QXwFieldInfo* GetFieldInfo(QXwFieldId fieldId);
// The same, and sets *pFieldWasAlreadyInCache to false when this lookup added
// the field to the cache, to true otherwise.
QXwFieldInfo* GetFieldInfo(QXwFieldId fieldId, bool* pFieldWasAlreadyInCache);
// The name of constant enumValue of the field (the cache's text), or null when
// the field has no constants or the value is outside them.
const char* GetEnumValueAsString(QXwFieldId fieldId, int enumValue);
// The field's enumeration constants (owned by the cache), or null.
QXwEnumConstants* GetEnumConstants(QXwFieldId fieldId);
// A new list of copies of every cached field description; null while the
// cache is closed.
skiff::FieldInfoListCopyPtr GetFieldList();

#endif  // SKIFF_DISPATCHER_FIELDINFOCACHE_H_
