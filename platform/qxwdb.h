// The map platform's object database: fields and their values on objects.
//
// Same conventions as qxw.h: fresh allocations released by the matching free
// function; null (or 0) and a code in QXwError on failure.
#ifndef SKIFF_PLATFORM_QXWDB_H_
#define SKIFF_PLATFORM_QXWDB_H_

#include "platform/qxwrecords.h"

#ifdef __cplusplus
extern "C" {
#endif

// The id of the named field, 0 when the database has no such field.
QXwFieldId QXwDbFieldNameToFieldId(const char* fieldName);
// The object whose "Selection Name" is `selectionName`, 0 if none.
QXwObjectId QXwDbSelectionNameToObjectId(const char* selectionName);
// The object's selection name, allocated with malloc (release with free);
// null if the object has none.
char* QXwDbObjectIdToSelectionName(QXwObjectId objectId);
// The node whose "IP Hostname" or own "IP Address" is `hostOrAddress`, 0 if
// none.
QXwObjectId QXwDbHostnameToObjectId(const char* hostOrAddress);

// Every field set on the object, in the object's field order.
QXwFieldBindList* QXwDbGetFieldValues(QXwObjectId objectId);
// The object's capability fields, in the object's field order.
QXwFieldBindList* QXwDbGetCapabilityFieldValues(QXwObjectId objectId);
void QXwDbFreeFieldBindList(QXwFieldBindList* list);

// One entry per object asked for, in order; an entry's value is null when
// the object does not exist or has no value for the field.
QXwObjectFieldList* QXwDbGetFieldValuesByObjects(QXwObjectIdList* objects, QXwFieldId fieldId);
void QXwDbFreeObjectFieldList(QXwObjectFieldList* list);

// The integer value of a field; -1 (all bits set) when it cannot be read.
int QXwDbGetFieldIntegerValue(QXwObjectId objectId, QXwFieldId fieldId);
// Stores an integer value; 0 on success.
int QXwDbSetFieldIntegerValue(QXwObjectId objectId, QXwFieldId fieldId, int value);

// The objects whose field equals the binding's value (every binding, for the
// plural form), in creation order; null when no object matches.
QXwObjectIdList* QXwDbListObjectsByFieldValue(QXwFieldBinding* binding);
QXwObjectIdList* QXwDbListObjectsByFieldValues(QXwFieldBindList* bindings);
void QXwDbFreeObjectIdList(QXwObjectIdList* list);

// Every field of the database (`flags` is 0), in definition order.
QXwFieldList* QXwDbListFields(int flags);
void QXwDbFreeFieldList(QXwFieldList* list);
QXwFieldInfo* QXwDbGetFieldInfo(QXwFieldId fieldId);
void QXwDbFreeFieldInfo(QXwFieldInfo* info);
// The constants of an enumeration field, in the order of their values.
QXwEnumConstants* QXwDbGetEnumConstants(QXwFieldId fieldId);
void QXwDbFreeEnumConstants(QXwEnumConstants* constants);

#ifdef __cplusplus
}
#endif

#endif  // SKIFF_PLATFORM_QXWDB_H_
