#include "emulator/records.h"

#include "emulator/arena.h"
#include "emulator/list_order.h"

namespace qxwemu {

namespace {

int IntBits(int64_t n) { return static_cast<int>(static_cast<uint32_t>(n)); }

void FillScalarValue(Arena& a, QXwFieldValue& out, const FieldDef& field, const Scalar& s) {
  switch (field.type) {
    case QXW_FIELD_INTEGER:
      out.un.int_val = IntBits(s.num);
      break;
    case QXW_FIELD_BOOLEAN:
      out.un.bool_val = static_cast<QXwBoolean>(s.num);
      break;
    case QXW_FIELD_ENUMERATION:
      out.un.enum_val = static_cast<int>(s.num);
      break;
    default:
      out.un.string_val = a.Text(s.text);
  }
}

QXwFieldValue* NewValue(Arena& a, const FieldDef& field, const FieldValue& v) {
  auto* out = a.New<QXwFieldValue>();
  out->field_type = field.type;
  out->modified = 0;
  if (!field.list) {
    FillScalarValue(a, *out, field, v.scalar);
    return out;
  }
  out->is_list = 1;
  auto* list = a.New<QXwListFieldValue>();
  list->count = static_cast<int>(v.list.size());
  list->list = a.New<QXwListFieldEntry>(v.list.size());
  for (size_t i = 0; i < v.list.size(); ++i) {
    QXwFieldValue element{};
    FillScalarValue(a, element, field, v.list[i]);
    QXwListFieldEntry& e = list->list[i];
    if (field.type == QXW_FIELD_STRING) {
      e.string_val = element.un.string_val;
    } else {
      e.int_val = element.un.int_val;
    }
  }
  out->un.list_val = list;
  return out;
}

void FillBindings(Arena& a, QXwFieldBindList& out, const Map& map, const Object& o,
                  bool capabilityOnly) {
  std::vector<std::pair<const FieldDef*, const FieldValue*>> chosen;
  chosen.reserve(o.fields.size());
  for (const FieldValue* v : ServedFields(o)) {
    const FieldDef* def = map.FieldById(v->field);
    if (def == nullptr || (capabilityOnly && !def->capability)) continue;
    chosen.emplace_back(def, v);
  }
  out.count = static_cast<int>(chosen.size());
  out.fields = a.New<QXwFieldBinding>(chosen.size());
  for (size_t i = 0; i < chosen.size(); ++i) {
    out.fields[i].field_id = chosen[i].first->id;
    out.fields[i].field_val = NewValue(a, *chosen[i].first, *chosen[i].second);
  }
}

void FillObject(QXwObjectInfo& out, const Object& o) {
  out.object_id = o.id;
  out.child_submap_id = o.childSubmap;
  out.num_symbols = static_cast<int>(o.symbols.size());
  out.object_status = o.status;
  out.compound_status = o.compoundStatus;
  out.op_scope = 0;
  out.field_values = nullptr;
}

void FillSubmap(Arena& a, QXwSubmapInfo& out, const Submap& s) {
  out.submap_id = s.id;
  out.submap_name = a.Text(s.name);
  out.submap_policy = s.policy;
  out.app_name = a.Text(s.app);
  out.submap_type = s.type;
  out.parent_object_id = s.parentObject;
  out.layout_style = s.layoutStyle;
  out.layout_on = s.layoutOn ? 1 : 0;
  out.bg_graphics = a.Text(s.background);
}

void FillField(Arena& a, QXwFieldInfo& out, const FieldDef& f) {
  out.field_id = f.id;
  out.field_name = a.Text(f.name);
  out.field_type = f.type;
  out.field_flags = f.flags();
}

}  // namespace

QXwMapInfo* BuildMapInfo(const Map& map) {
  Arena a(64 + map.name.size());
  auto* info = a.New<QXwMapInfo>();
  info->map_name = a.Text(map.name);
  info->permissions = map.permissions;
  info->creation_time = map.creationTime;
  info->last_closed_time = map.lastClosedTime;
  info->root_submap_id = map.rootSubmap;
  return a.Finish(info);
}

QXwSymbolList* BuildSymbolList(Map& map, const std::vector<const Symbol*>& symbols) {
  Arena a(sizeof(QXwSymbolList) + symbols.size() * (sizeof(QXwSymbolInfo) + 64));
  auto* list = a.New<QXwSymbolList>();
  list->count = static_cast<int>(symbols.size());
  list->symbols = a.New<QXwSymbolInfo>(symbols.size());
  for (size_t i = 0; i < symbols.size(); ++i) {
    const Symbol& s = *symbols[i];
    QXwSymbolInfo& out = list->symbols[i];
    out.symbol_id = s.id;
    out.submap_id = s.submap;
    FillObject(out.object, *map.FindObject(s.object));
    out.symbol_label = a.Text(s.label);
    out.symbol_status = s.status;
    out.status_source = s.statusSource;
    out.plane = s.plane;
    out.hidden = s.hidden ? 1 : 0;
    out.symbol_type = a.Text(*s.type);
    out.symbol_variety = s.variety;
    if (s.variety == QXW_SYMBOL_CONNECTION) {
      out.var_un.conninfo.endpoint1_id = s.endpoint1;
      out.var_un.conninfo.endpoint2_id = s.endpoint2;
      out.var_un.conninfo.is_meta_conn = s.metaConnection ? 1 : 0;
    } else {
      out.var_un.position.placement = s.placement;
      if (s.placement == QXW_PLACEMENT_AFTER) {
        out.var_un.position.un.pred_symbol = s.pred;
      } else {
        out.var_un.position.un.coords.x = s.x;
        out.var_un.position.un.coords.y = s.y;
        out.var_un.position.un.coords.width = s.width;
        out.var_un.position.un.coords.height = s.height;
      }
    }
    out.behavior = s.behavior;
    out.apps.count = static_cast<int>(s.apps->size());
    out.apps.names = a.New<char*>(s.apps->size());
    for (size_t k = 0; k < s.apps->size(); ++k) out.apps.names[k] = a.Text((*s.apps)[k]);
  }
  return a.Finish(list);
}

QXwSubmapInfo* BuildSubmapInfo(const Submap& submap) {
  Arena a(sizeof(QXwSubmapInfo) + 64 + submap.name.size());
  auto* info = a.New<QXwSubmapInfo>();
  FillSubmap(a, *info, submap);
  return a.Finish(info);
}

QXwSubmapList* BuildSubmapList(const std::vector<const Submap*>& submaps) {
  Arena a(sizeof(QXwSubmapList) + submaps.size() * (sizeof(QXwSubmapInfo) + 64));
  auto* list = a.New<QXwSubmapList>();
  list->count = static_cast<int>(submaps.size());
  list->submaps = a.New<QXwSubmapInfo>(submaps.size());
  for (size_t i = 0; i < submaps.size(); ++i) FillSubmap(a, list->submaps[i], *submaps[i]);
  return a.Finish(list);
}

QXwObjectInfo* BuildObjectInfo(const Object& object) {
  Arena a(sizeof(QXwObjectInfo));
  auto* info = a.New<QXwObjectInfo>();
  FillObject(*info, object);
  return a.Finish(info);
}

QXwObjectList* BuildObjectList(const Map& map, const std::vector<const Object*>& objects) {
  Arena a(sizeof(QXwObjectList) + objects.size() * 512);
  auto* list = a.New<QXwObjectList>();
  list->count = static_cast<int>(objects.size());
  list->objects = a.New<QXwObjectInfo>(objects.size());
  for (size_t i = 0; i < objects.size(); ++i) {
    FillObject(list->objects[i], *objects[i]);
    auto* bindings = a.New<QXwFieldBindList>();
    FillBindings(a, *bindings, map, *objects[i], false);
    list->objects[i].field_values = bindings;
  }
  return a.Finish(list);
}

QXwFieldBindList* BuildFieldBindList(const Map& map, const Object& object, bool capabilityOnly) {
  Arena a(sizeof(QXwFieldBindList) + object.fields.size() * 96);
  auto* list = a.New<QXwFieldBindList>();
  FillBindings(a, *list, map, object, capabilityOnly);
  return a.Finish(list);
}

QXwObjectFieldList* BuildObjectFieldList(Map& map, const QXwObjectIdList& ids,
                                         const FieldDef& field) {
  size_t n = ids.count > 0 ? static_cast<size_t>(ids.count) : 0;
  Arena a(sizeof(QXwObjectFieldList) + n * (sizeof(QXwObjectField) + sizeof(QXwFieldValue) + 16));
  auto* list = a.New<QXwObjectFieldList>();
  list->count = static_cast<int>(n);
  list->objects = a.New<QXwObjectField>(n);
  for (size_t i = 0; i < n; ++i) {
    list->objects[i].object_id = ids.object_ids[i];
    const Object* o = map.FindObject(ids.object_ids[i]);
    const FieldValue* v = o == nullptr ? nullptr : o->Find(field.id);
    list->objects[i].field_value = v == nullptr ? nullptr : NewValue(a, field, *v);
  }
  return a.Finish(list);
}

QXwObjectIdList* BuildObjectIdList(const std::vector<QXwObjectId>& ids) {
  Arena a(sizeof(QXwObjectIdList) + ids.size() * sizeof(QXwObjectId) + 16);
  auto* list = a.New<QXwObjectIdList>();
  list->count = static_cast<int>(ids.size());
  list->object_ids = a.New<QXwObjectId>(ids.size());
  for (size_t i = 0; i < ids.size(); ++i) list->object_ids[i] = ids[i];
  return a.Finish(list);
}

QXwFieldList* BuildFieldList(const std::vector<const FieldDef*>& fields) {
  Arena a(sizeof(QXwFieldList) + fields.size() * (sizeof(QXwFieldInfo) + 24));
  auto* list = a.New<QXwFieldList>();
  list->count = static_cast<int>(fields.size());
  list->field_list = a.New<QXwFieldInfo>(fields.size());
  for (size_t i = 0; i < fields.size(); ++i) FillField(a, list->field_list[i], *fields[i]);
  return a.Finish(list);
}

QXwFieldInfo* BuildFieldInfo(const FieldDef& field) {
  Arena a(sizeof(QXwFieldInfo) + field.name.size() + 16);
  auto* info = a.New<QXwFieldInfo>();
  FillField(a, *info, field);
  return a.Finish(info);
}

QXwEnumConstants* BuildEnumConstants(const FieldDef& field) {
  Arena a(sizeof(QXwEnumConstants) + field.enumNames.size() * 24);
  auto* constants = a.New<QXwEnumConstants>();
  constants->count = static_cast<int>(field.enumNames.size());
  constants->names = a.New<char*>(field.enumNames.size());
  for (size_t i = 0; i < field.enumNames.size(); ++i)
    constants->names[i] = a.Text(field.enumNames[i]);
  return a.Finish(constants);
}

}  // namespace qxwemu
