// The entities of map files: an object, a submap or a symbol read from its
// element, with every key checked. References to other entities are checked
// elsewhere (map_checks.cpp).
#include "emulator/loader.h"
#include "emulator/map_keys.h"

namespace qxwemu {

Object ParseObject(const Json& element, const Map& map, size_t position) {
  Reader r(element, Positional("object", position));
  Object o;
  o.id = ReadId(r, "object");
  o.childSubmap = r.Id("childSubmap");
  o.status = r.Uint32("status");
  o.compoundStatus = r.Uint32("compoundStatus");
  o.acknowledged = r.Bool("acknowledged", false);
  o.managed = r.Bool("managed", true);
  if (const Json* fields = r.Get("fields")) {
    if (!fields->is_object()) throw MapError(r.entity(), "\"fields\" must be a JSON object");
    o.fields.reserve(fields->size());
    for (const auto& [name, value] : fields->items()) {
      const FieldDef* def = map.FieldByName(name);
      if (def == nullptr) throw MapError(r.entity(), "unknown field " + Quote(name));
      o.fields.push_back(ParseFieldValue(*def, value, r.entity()));
    }
  }
  r.Done();
  return o;
}

Submap ParseSubmap(const Json& element, size_t position) {
  Reader r(element, Positional("submap", position));
  Submap s;
  s.id = ReadId(r, "submap");
  s.name = r.Str("name");
  s.app = r.Str("app");
  s.policy = r.Int32("policy");
  s.type = r.Int32("type");
  s.parentObject = r.Id("parentObject");
  s.layoutStyle = r.Int32("layoutStyle");
  s.layoutOn = r.Bool("layoutOn");
  s.background = r.Str("background");
  r.Done();
  return s;
}

Symbol ParseSymbol(const Json& element, Map& map, size_t position) {
  Reader r(element, Positional("symbol", position));
  Symbol s;
  s.id = ReadId(r, "symbol");
  s.submap = r.Id("submap");
  s.object = r.Id("object");
  if (s.submap == 0) throw MapError(r.entity(), "\"submap\" is missing");
  if (s.object == 0) throw MapError(r.entity(), "\"object\" is missing");
  s.label = r.Str("label");
  s.type = map.InternType(r.Str("type"));
  s.variety = static_cast<int>(r.Int("variety", kMinInt, kMaxInt));
  if (s.variety != QXW_SYMBOL_ICON && s.variety != QXW_SYMBOL_CONNECTION) {
    throw MapError(r.entity(), "\"variety\" must be 1 (icon) or 2 (connection)");
  }
  s.plane = static_cast<QXwPlaneType>(r.Int("plane", kMinInt, kMaxInt));
  if (s.plane != QXW_PLANE_APPLICATION && s.plane != QXW_PLANE_USER) {
    throw MapError(r.entity(), "\"plane\" must be 2 (application) or 4 (user)");
  }
  s.hidden = r.Bool("hidden");
  s.status = r.Uint32("status");
  s.statusSource = r.Int32("statusSource");
  s.apps = map.InternApps(r.Strings("apps"));
  s.behavior = r.Int32("behavior");
  s.normalized = r.Bool("normalized");
  const bool icon = s.variety == QXW_SYMBOL_ICON;
  for (const char* key : {"placement", "x", "y", "width", "height", "pred"}) {
    r.Forbid(key, icon, "applies to icon symbols only");
  }
  for (const char* key : {"endpoint1", "endpoint2", "metaConnection"}) {
    r.Forbid(key, !icon, "applies to connection symbols only");
  }
  if (icon) {
    s.placement = r.Int32("placement");
    s.x = r.Int32("x");
    s.y = r.Int32("y");
    s.width = r.Int32("width");
    s.height = r.Int32("height");
    s.pred = r.Id("pred");
  } else {
    s.endpoint1 = r.Id("endpoint1");
    s.endpoint2 = r.Id("endpoint2");
    s.metaConnection = r.Bool("metaConnection");
    if (s.endpoint1 == 0 || s.endpoint2 == 0) {
      throw MapError(r.entity(), "a connection needs \"endpoint1\" and \"endpoint2\"");
    }
  }
  r.Done();
  return s;
}

}  // namespace qxwemu
