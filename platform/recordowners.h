// The library's own owners of the records and lists the platform returns
// (the platform's headers declare none): each releases its record with the
// platform's matching free function when it goes. Also the checked readers of
// field values.
#ifndef SKIFF_PLATFORM_RECORDOWNERS_H_
#define SKIFF_PLATFORM_RECORDOWNERS_H_

#include <memory>
#include <optional>

#include "platform/qxw.h"
#include "platform/qxwdb.h"

namespace skiff {

template <class Record, void (*Release)(Record*)>
struct PlatformRelease {
  void operator()(Record* record) const { Release(record); }
};

template <class Record, void (*Release)(Record*)>
using PlatformPtr = std::unique_ptr<Record, PlatformRelease<Record, Release>>;

using SymbolListPtr = PlatformPtr<QXwSymbolList, QXwFreeSymbolList>;
using SubmapInfoPtr = PlatformPtr<QXwSubmapInfo, QXwFreeSubmapInfo>;
using ObjectInfoPtr = PlatformPtr<QXwObjectInfo, QXwFreeObjectInfo>;
using FieldBindListPtr = PlatformPtr<QXwFieldBindList, QXwDbFreeFieldBindList>;
// The values of one field for a list of objects.
using ObjectFieldValueListPtr = PlatformPtr<QXwObjectFieldList, QXwDbFreeObjectFieldList>;
// The platform's descriptions of database fields.
using FieldInfoListPtr = PlatformPtr<QXwFieldList, QXwDbFreeFieldList>;
using FieldInfoPtr = PlatformPtr<QXwFieldInfo, QXwDbFreeFieldInfo>;
using ObjectIdListPtr = PlatformPtr<QXwObjectIdList, QXwDbFreeObjectIdList>;

// Field values, read only through the member their field_type names: a
// value of another type counts as absent, so no union member is ever read as
// another (a string read as an integer would hand out pointer bits).

// The integer a single (not list) integer value holds; nothing otherwise.
inline std::optional<int> IntegerValue(const QXwFieldValue* value) {
  if (value == nullptr || value->is_list || value->field_type != QXW_FIELD_INTEGER) return {};
  return value->un.int_val;
}

// The entries of a list of strings; null for anything else.
inline const QXwListFieldValue* StringListValue(const QXwFieldValue* value) {
  if (value == nullptr || !value->is_list || value->field_type != QXW_FIELD_STRING) return nullptr;
  return value->un.list_val;
}

}  // namespace skiff

#endif  // SKIFF_PLATFORM_RECORDOWNERS_H_
