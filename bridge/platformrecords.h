// Owners of the records and lists the platform returns: each releases its
// record with the platform's matching free function when it goes.
#ifndef SKIFF_BRIDGE_PLATFORMRECORDS_H_
#define SKIFF_BRIDGE_PLATFORMRECORDS_H_

#include <memory>

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
using ObjectFieldListPtr = PlatformPtr<QXwObjectFieldList, QXwDbFreeObjectFieldList>;
using PlatformFieldListPtr = PlatformPtr<QXwFieldList, QXwDbFreeFieldList>;
using FieldInfoPtr = PlatformPtr<QXwFieldInfo, QXwDbFreeFieldInfo>;

}  // namespace skiff

#endif  // SKIFF_BRIDGE_PLATFORMRECORDS_H_
