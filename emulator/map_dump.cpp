// Writing a map back in map file form.
#include "emulator/loader.h"
#include "emulator/map_fields.h"

namespace qxwemu {

Json DumpValue(const FieldDef& field, const FieldValue& value) {
  auto scalar = [&](const Scalar& s) -> Json {
    switch (field.type) {
      case QXW_FIELD_INTEGER:
        return s.num;
      case QXW_FIELD_BOOLEAN:
        return s.num == 1;
      case QXW_FIELD_ENUMERATION:
        if (s.num >= 0 && static_cast<size_t>(s.num) < field.enumNames.size()) {
          return field.enumNames[s.num];
        }
        return s.num;
      default:
        return s.text;
    }
  };
  if (!field.list) return scalar(value.scalar);
  Json list = Json::array();
  for (const Scalar& s : value.list) list.push_back(scalar(s));
  return list;
}

Json DumpMap(const Map& map) {
  Json out;
  out["map"] = {{"name", map.name},
                {"permissions", map.permissions},
                {"rootSubmap", map.rootSubmap},
                {"creationTime", static_cast<int64_t>(map.creationTime)},
                {"lastClosedTime", static_cast<int64_t>(map.lastClosedTime)}};
  out["standardFields"] = false;
  Json fields = Json::array();
  for (const FieldDef& f : map.Fields()) {
    Json d = {{"id", f.id}, {"name", f.name}, {"type", TypeName(f.type)}};
    if (f.type == QXW_FIELD_ENUMERATION) d["enum"] = f.enumNames;
    if (f.list) d["list"] = true;
    if (f.capability) d["capability"] = true;
    fields.push_back(std::move(d));
  }
  out["fields"] = std::move(fields);
  Json objects = Json::array();
  for (const Object* o : map.ObjectsInOrder()) {
    Json values = Json::object();
    for (const FieldValue& v : o->fields) {
      if (const FieldDef* def = map.FieldById(v.field)) values[def->name] = DumpValue(*def, v);
    }
    objects.push_back({{"id", o->id},
                       {"childSubmap", o->childSubmap},
                       {"status", o->status},
                       {"compoundStatus", o->compoundStatus},
                       {"acknowledged", o->acknowledged},
                       {"managed", o->managed},
                       {"fields", std::move(values)}});
  }
  out["objects"] = std::move(objects);
  Json submaps = Json::array();
  for (const Submap* s : map.SubmapsInOrder()) {
    submaps.push_back({{"id", s->id},
                       {"name", s->name},
                       {"app", s->app},
                       {"policy", s->policy},
                       {"type", s->type},
                       {"parentObject", s->parentObject},
                       {"layoutStyle", s->layoutStyle},
                       {"layoutOn", s->layoutOn},
                       {"background", s->background}});
  }
  out["submaps"] = std::move(submaps);
  Json symbols = Json::array();
  for (const Symbol* s : map.SymbolsInOrder()) {
    Json j = {{"id", s->id},
              {"submap", s->submap},
              {"object", s->object},
              {"label", s->label},
              {"type", *s->type},
              {"variety", s->variety},
              {"plane", s->plane},
              {"hidden", s->hidden},
              {"status", s->status},
              {"statusSource", s->statusSource},
              {"apps", *s->apps},
              {"behavior", s->behavior},
              {"normalized", s->normalized}};
    if (s->variety == QXW_SYMBOL_ICON) {
      j["placement"] = s->placement;
      j["x"] = s->x;
      j["y"] = s->y;
      j["width"] = s->width;
      j["height"] = s->height;
      j["pred"] = s->pred;
    } else {
      j["endpoint1"] = s->endpoint1;
      j["endpoint2"] = s->endpoint2;
      j["metaConnection"] = s->metaConnection;
    }
    symbols.push_back(std::move(j));
  }
  out["symbols"] = std::move(symbols);
  return out;
}

}  // namespace qxwemu
