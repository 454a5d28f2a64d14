// The object database: fields, values and queries by value.
#include <cstdlib>
#include <cstring>

#include "emulator/arena.h"
#include "emulator/emulator.h"
#include "emulator/list_order.h"
#include "emulator/query.h"
#include "emulator/records.h"
#include "platform/qxwdb.h"

using namespace qxwemu;

namespace {

const FieldDef* FieldNamed(Map& map, const char* name) {
  const FieldDef* def = map.FieldByName(name);
  if (def == nullptr) SetError(QXW_ERR_NO_SUCH_FIELD, std::string("no such field: ") + name);
  return def;
}

const FieldDef* FieldWithId(Map& map, QXwFieldId id) {
  const FieldDef* def = map.FieldById(id);
  if (def == nullptr) SetError(QXW_ERR_NO_SUCH_FIELD, "no such field: " + std::to_string(id));
  return def;
}

// The objects whose value of `field` is the text `text`, in creation order.
const std::vector<Object*>* ObjectsWithText(Map& map, const char* fieldName, const char* text) {
  const FieldDef* def = map.FieldByName(fieldName);
  if (def == nullptr || def->list || text == nullptr) return nullptr;
  Scalar key;
  key.text = text;
  return map.Lookup(*def, key);
}

// The answer of a query, in the order the platform serves it.
QXwObjectIdList* Answer(std::vector<QXwObjectId> ids) {
  ServeObjects(&ids);
  if (ids.empty() && !EmptyForNothing()) {
    SetError(QXW_ERR_NOT_FOUND, "no object matches");
    return nullptr;
  }
  return BuildObjectIdList(ids);
}

// An object's field values (only its capability fields when asked).
QXwFieldBindList* FieldValues(QXwObjectId objectId, bool capabilityOnly) {
  Map* map = Database();
  if (map == nullptr) return nullptr;
  const Object* object = ObjectOrError(*map, objectId);
  if (object == nullptr)
    return EmptyForNothing() ? BuildFieldBindList(*map, Object(), false) : nullptr;
  QXwFieldBindList* list = BuildFieldBindList(*map, *object, capabilityOnly);
  if (list->count == 0 && NoneForNothing()) {
    Arena::Release(list);
    return nullptr;
  }
  return list;
}

}  // namespace

extern "C" {

QXwFieldId QXwDbFieldNameToFieldId(const char* fieldName) {
  Call call(k_QXwDbFieldNameToFieldId);
  if (call.Failing()) return 0;
  Map* map = Database();
  if (map == nullptr) return 0;
  if (fieldName == nullptr) {
    SetError(QXW_ERR_BAD_ARGUMENT, "no field name was given");
    return 0;
  }
  const FieldDef* def = FieldNamed(*map, fieldName);
  return def == nullptr ? 0 : def->id;
}

QXwObjectId QXwDbSelectionNameToObjectId(const char* selectionName) {
  Call call(k_QXwDbSelectionNameToObjectId);
  if (call.Failing()) return 0;
  Map* map = Database();
  if (map == nullptr) return 0;
  const std::vector<Object*>* owners = ObjectsWithText(*map, "Selection Name", selectionName);
  if (owners == nullptr || owners->empty()) {
    SetError(QXW_ERR_NOT_FOUND, "no object has that selection name");
    return 0;
  }
  return owners->front()->id;
}

char* QXwDbObjectIdToSelectionName(QXwObjectId objectId) {
  Call call(k_QXwDbObjectIdToSelectionName);
  if (call.Failing({{objectId}})) return nullptr;
  Map* map = Database();
  if (map == nullptr) return nullptr;
  const Object* object = ObjectOrError(*map, objectId);
  const FieldDef* def = map->FieldByName("Selection Name");
  if (object == nullptr || def == nullptr) return nullptr;
  const FieldValue* value = object->Find(def->id);
  if (value == nullptr || def->list) {
    SetError(QXW_ERR_NO_VALUE, "object " + std::to_string(objectId) + " has no selection name");
    return nullptr;
  }
  return strdup(value->scalar.text.c_str());
}

QXwObjectId QXwDbHostnameToObjectId(const char* hostOrAddress) {
  Call call(k_QXwDbHostnameToObjectId);
  if (call.Failing()) return 0;
  Map* map = Database();
  if (map == nullptr) return 0;
  const FieldDef* isNode = map->FieldByName("isNode");
  auto isNodeObject = [&](const Object* o) {
    const FieldValue* v = isNode == nullptr ? nullptr : o->Find(isNode->id);
    return v != nullptr && v->scalar.num == 1;
  };
  // The first node, in the order of a query, by host name, else by address.
  for (const char* field : {"IP Hostname", "IP Address"}) {
    std::vector<QXwObjectId> nodes;
    if (const std::vector<Object*>* owners = ObjectsWithText(*map, field, hostOrAddress)) {
      for (const Object* o : *owners) {
        if (isNodeObject(o)) nodes.push_back(o->id);
      }
    }
    ServeObjects(&nodes);
    if (!nodes.empty()) return nodes.front();
  }
  SetError(QXW_ERR_NOT_FOUND, "no node has that host name or address");
  return 0;
}

QXwFieldBindList* QXwDbGetFieldValues(QXwObjectId objectId) {
  Call call(k_QXwDbGetFieldValues);
  if (call.Failing({{objectId}})) return nullptr;
  return FieldValues(objectId, false);
}

QXwFieldBindList* QXwDbGetCapabilityFieldValues(QXwObjectId objectId) {
  Call call(k_QXwDbGetCapabilityFieldValues);
  if (call.Failing({{objectId}})) return nullptr;
  return FieldValues(objectId, true);
}

void QXwDbFreeFieldBindList(QXwFieldBindList* list) {
  CountCall(k_QXwDbFreeFieldBindList);
  Arena::Release(list);
}

QXwObjectFieldList* QXwDbGetFieldValuesByObjects(QXwObjectIdList* objects, QXwFieldId fieldId) {
  Call call(k_QXwDbGetFieldValuesByObjects);
  if (call.Failing(ListArgs(objects, {fieldId}))) return nullptr;
  Map* map = Database();
  if (map == nullptr) return nullptr;
  if (objects == nullptr || objects->count < 0 ||
      (objects->count > 0 && objects->object_ids == nullptr)) {
    SetError(QXW_ERR_BAD_ARGUMENT, "invalid object id list");
    return nullptr;
  }
  const FieldDef* def = FieldWithId(*map, fieldId);
  // One entry per object asked for, whatever the lists setting: the answer
  // to no objects is an empty list, not none (which would be a failure).
  return def == nullptr ? nullptr : BuildObjectFieldList(*map, *objects, *def);
}

void QXwDbFreeObjectFieldList(QXwObjectFieldList* list) {
  CountCall(k_QXwDbFreeObjectFieldList);
  Arena::Release(list);
}

int QXwDbGetFieldIntegerValue(QXwObjectId objectId, QXwFieldId fieldId) {
  Call call(k_QXwDbGetFieldIntegerValue);
  if (call.Failing({{objectId, fieldId}})) return -1;
  Map* map = Database();
  if (map == nullptr) return -1;
  const Object* object = ObjectOrError(*map, objectId);
  const FieldDef* def = FieldWithId(*map, fieldId);
  if (object == nullptr || def == nullptr) return -1;
  if (def->type != QXW_FIELD_INTEGER || def->list) {
    SetError(QXW_ERR_WRONG_TYPE, "field " + def->name + " is not an integer field");
    return -1;
  }
  const FieldValue* value = object->Find(fieldId);
  if (value == nullptr) {
    SetError(QXW_ERR_NO_VALUE);
    return -1;
  }
  return static_cast<int>(static_cast<uint32_t>(value->scalar.num));
}

int QXwDbSetFieldIntegerValue(QXwObjectId objectId, QXwFieldId fieldId, int value) {
  Call call(k_QXwDbSetFieldIntegerValue);
  if (call.Failing({{objectId, fieldId}})) return -1;
  Map* map = Database();
  if (map == nullptr) return -1;
  Object* object = ObjectOrError(*map, objectId);
  const FieldDef* def = FieldWithId(*map, fieldId);
  if (object == nullptr || def == nullptr) return -1;
  if (def->type != QXW_FIELD_INTEGER || def->list) {
    SetError(QXW_ERR_WRONG_TYPE, "field " + def->name + " is not an integer field");
    return -1;
  }
  FieldValue v;
  v.field = fieldId;
  v.scalar.num = value;
  map->SetField(*object, std::move(v));
  return 0;
}

QXwObjectIdList* QXwDbListObjectsByFieldValue(QXwFieldBinding* binding) {
  Call call(k_QXwDbListObjectsByFieldValue);
  if (call.Failing({{}, nullptr, 0, binding, binding != nullptr ? 1 : 0})) return nullptr;
  Map* map = Database();
  if (map == nullptr) return nullptr;
  if (binding == nullptr) {
    SetError(QXW_ERR_BAD_ARGUMENT, "no binding was given");
    return nullptr;
  }
  std::vector<QXwObjectId> ids;
  if (!ObjectsMatching(*map, binding, 1, &ids)) return nullptr;
  return Answer(ids);
}

QXwObjectIdList* QXwDbListObjectsByFieldValues(QXwFieldBindList* bindings) {
  Call call(k_QXwDbListObjectsByFieldValues);
  const bool valid = bindings != nullptr && bindings->count > 0 && bindings->fields != nullptr;
  if (call.Failing(
          {{}, nullptr, 0, valid ? bindings->fields : nullptr, valid ? bindings->count : 0}))
    return nullptr;
  Map* map = Database();
  if (map == nullptr) return nullptr;
  if (bindings == nullptr || bindings->count < 0 ||
      (bindings->count > 0 && bindings->fields == nullptr)) {
    SetError(QXW_ERR_BAD_ARGUMENT, "invalid binding list");
    return nullptr;
  }
  std::vector<QXwObjectId> ids;
  if (!ObjectsMatching(*map, bindings->fields, bindings->count, &ids)) return nullptr;
  return Answer(ids);
}

void QXwDbFreeObjectIdList(QXwObjectIdList* list) {
  CountCall(k_QXwDbFreeObjectIdList);
  Arena::Release(list);
}

QXwFieldList* QXwDbListFields(int) {
  Call call(k_QXwDbListFields);
  if (call.Failing()) return nullptr;
  Map* map = Database();
  if (map == nullptr || (map->Fields().empty() && NoneForNothing())) return nullptr;
  return BuildFieldList(ServedFields(*map));
}

void QXwDbFreeFieldList(QXwFieldList* list) {
  CountCall(k_QXwDbFreeFieldList);
  Arena::Release(list);
}

QXwFieldInfo* QXwDbGetFieldInfo(QXwFieldId fieldId) {
  Call call(k_QXwDbGetFieldInfo);
  if (call.Failing({{fieldId}})) return nullptr;
  Map* map = Database();
  const FieldDef* def = map == nullptr ? nullptr : FieldWithId(*map, fieldId);
  return def == nullptr ? nullptr : BuildFieldInfo(*def);
}

void QXwDbFreeFieldInfo(QXwFieldInfo* info) {
  CountCall(k_QXwDbFreeFieldInfo);
  Arena::Release(info);
}

QXwEnumConstants* QXwDbGetEnumConstants(QXwFieldId fieldId) {
  Call call(k_QXwDbGetEnumConstants);
  if (call.Failing({{fieldId}})) return nullptr;
  Map* map = Database();
  const FieldDef* def = map == nullptr ? nullptr : FieldWithId(*map, fieldId);
  if (def == nullptr) return nullptr;
  if (def->type != QXW_FIELD_ENUMERATION) {
    SetError(QXW_ERR_WRONG_TYPE, "field " + def->name + " is not an enumeration");
    return nullptr;
  }
  if (def->enumNames.empty() && NoneForNothing()) return nullptr;
  return BuildEnumConstants(*def);
}

void QXwDbFreeEnumConstants(QXwEnumConstants* constants) {
  CountCall(k_QXwDbFreeEnumConstants);
  Arena::Release(constants);
}

}  // extern "C"
