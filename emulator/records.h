// Platform records built from the model. Each Build* returns a fresh arena
// allocation (see arena.h) that Arena::Release, through the matching QXwFree*
// function, gives back.
#ifndef SKIFF_EMULATOR_RECORDS_H_
#define SKIFF_EMULATOR_RECORDS_H_

#include <vector>

#include "emulator/model.h"
#include "platform/qxwrecords.h"

namespace qxwemu {

QXwMapInfo* BuildMapInfo(const Map& map);
// Symbols with their objects inline; every symbol's object must exist.
QXwSymbolList* BuildSymbolList(Map& map, const std::vector<const Symbol*>& symbols);
QXwSubmapInfo* BuildSubmapInfo(const Submap& submap);
QXwSubmapList* BuildSubmapList(const std::vector<const Submap*>& submaps);
QXwObjectInfo* BuildObjectInfo(const Object& object);
// Objects with their field values (field_values filled).
QXwObjectList* BuildObjectList(const Map& map, const std::vector<const Object*>& objects);
// The object's field values (only the capability fields when asked).
QXwFieldBindList* BuildFieldBindList(const Map& map, const Object& object, bool capabilityOnly);
// One entry per id, with the value of `field` or null.
QXwObjectFieldList* BuildObjectFieldList(Map& map, const QXwObjectIdList& ids,
                                         const FieldDef& field);
QXwObjectIdList* BuildObjectIdList(const std::vector<QXwObjectId>& ids);
QXwFieldList* BuildFieldList(const std::vector<const FieldDef*>& fields);
QXwFieldInfo* BuildFieldInfo(const FieldDef& field);
QXwEnumConstants* BuildEnumConstants(const FieldDef& field);

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_RECORDS_H_
