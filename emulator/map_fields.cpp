// Fields in map files: the field definitions and the table they make, the
// standard fields, and field values in map file form.
#include "emulator/map_fields.h"

#include <algorithm>
#include <set>

#include "emulator/map_keys.h"

namespace qxwemu {

namespace {

// One value of `field` (an element, for a list field); throws MapError,
// naming `entity`, when it has the wrong type or range.
Scalar ParseScalar(const FieldDef& field, const Json& v, const std::string& entity) {
  Scalar s;
  const std::string where = "field " + Quote(field.name);
  switch (field.type) {
    case QXW_FIELD_INTEGER: {
      if (!v.is_number_integer()) throw MapError(entity, where + " must be an integer");
      bool tooBig = v.is_number_unsigned() && v.get<uint64_t>() > static_cast<uint64_t>(kMaxId);
      int64_t n = tooBig ? 0 : v.get<int64_t>();
      if (tooBig || n < kMinInt || n > kMaxId) {
        throw MapError(entity, where + " must be an integer from -2147483648 to 4294967295");
      }
      s.num = n;
      return s;
    }
    case QXW_FIELD_BOOLEAN:
      if (!v.is_boolean()) throw MapError(entity, where + " must be true or false");
      s.num = v.get<bool>() ? 1 : 0;
      return s;
    case QXW_FIELD_STRING:
      if (!v.is_string()) throw MapError(entity, where + " must be a string");
      s.text = v.get<std::string>();
      return s;
    case QXW_FIELD_ENUMERATION: {
      if (v.is_string()) {
        const std::string name = v.get<std::string>();
        auto it = std::find(field.enumNames.begin(), field.enumNames.end(), name);
        if (it == field.enumNames.end()) {
          throw MapError(entity, where + " has no constant " + Quote(name));
        }
        s.num = it - field.enumNames.begin();
        return s;
      }
      if (v.is_number_integer() && v.get<int64_t>() >= 0 &&
          v.get<int64_t>() < static_cast<int64_t>(field.enumNames.size())) {
        s.num = v.get<int64_t>();
        return s;
      }
      throw MapError(entity, where + " must be one of its constants' names or indexes (0 to " +
                                 std::to_string(static_cast<int64_t>(field.enumNames.size()) - 1) +
                                 ")");
    }
  }
  throw MapError(entity, where + " has an unknown type");
}

// One element of the "fields" array, at `position` (1-based); throws
// MapError when it is malformed.
FieldDef ParseFieldDef(const Json& element, size_t position) {
  Reader r(element, Positional("field", position));
  FieldDef f;
  f.name = r.Str("name");
  if (f.name.empty()) throw MapError(r.entity(), "\"name\" must be a non-empty string");
  r.Rename("field " + Quote(f.name));
  f.id = r.Id("id");
  const std::string type = r.Str("type");
  if (type == "integer") {
    f.type = QXW_FIELD_INTEGER;
  } else if (type == "boolean") {
    f.type = QXW_FIELD_BOOLEAN;
  } else if (type == "string") {
    f.type = QXW_FIELD_STRING;
  } else if (type == "enumeration") {
    f.type = QXW_FIELD_ENUMERATION;
  } else {
    throw MapError(r.entity(),
                   "\"type\" must be \"integer\", \"boolean\", \"string\" or \"enumeration\"");
  }
  r.Forbid("enum", f.type == QXW_FIELD_ENUMERATION, "applies to enumeration fields only");
  f.enumNames = r.Strings("enum");
  f.list = r.Bool("list");
  f.capability = r.Bool("capability");
  if (f.capability && (f.type != QXW_FIELD_BOOLEAN || f.list)) {
    throw MapError(r.entity(), "a capability field must be a boolean that is not a list");
  }
  r.Done();
  return f;
}

}  // namespace

const char* TypeName(int type) {
  switch (type) {
    case QXW_FIELD_INTEGER:
      return "integer";
    case QXW_FIELD_BOOLEAN:
      return "boolean";
    case QXW_FIELD_STRING:
      return "string";
    case QXW_FIELD_ENUMERATION:
      return "enumeration";
  }
  return "unknown";
}

std::vector<FieldDef> BuildFieldTable(bool standard, const Json* defs) {
  std::vector<FieldDef> table;
  if (standard) table = StandardFields();
  for (FieldDef& f : table) f.id = 0;
  if (defs != nullptr) {
    if (!defs->is_array()) throw MapError("fields", "must be an array");
    std::set<std::string> seen;
    size_t position = 0;
    for (const Json& element : *defs) {
      FieldDef f = ParseFieldDef(element, ++position);
      if (!seen.insert(f.name).second) throw MapError("field " + Quote(f.name), "defined twice");
      auto same = std::find_if(table.begin(), table.end(),
                               [&](const FieldDef& t) { return t.name == f.name; });
      if (same != table.end()) {
        *same = std::move(f);
      } else {
        table.push_back(std::move(f));
      }
    }
  }
  std::set<QXwFieldId> claimed;
  for (const FieldDef& f : table) {
    if (f.id != 0 && !claimed.insert(f.id).second) {
      throw MapError("field " + Quote(f.name), "id " + std::to_string(f.id) + " is already used");
    }
  }
  QXwFieldId next = 1;
  for (FieldDef& f : table) {
    if (f.id != 0) continue;
    while (claimed.count(next) != 0) ++next;
    f.id = next;
    claimed.insert(next);
  }
  return table;
}

std::vector<FieldDef> StandardFields() {
  std::vector<FieldDef> f;
  auto add = [&](const char* name, int type, bool capability = false, bool list = false) {
    FieldDef d;
    d.name = name;
    d.type = type;
    d.capability = capability;
    d.list = list;
    f.push_back(std::move(d));
  };
  for (const char* name :
       {"Selection Name", "IP Address", "SNMP ifPhysAddr", "IP Subnet Mask", "SNMP sysObjectID",
        "SNMP sysLocation", "SNMP sysDescr", "SNMP sysContact", "IP Hostname"}) {
    add(name, QXW_FIELD_STRING);
  }
  add("vendor", QXW_FIELD_ENUMERATION);
  f.back().enumNames = {"Unset", "Acme", "Globex", "Initech", "Umbrella", "Hooli"};
  add("SNMPAgent", QXW_FIELD_ENUMERATION);
  f.back().enumNames = {"Unset", "Generic", "Acme Agent", "Globex Agent", "Proxy"};
  add("isSNMPProxied", QXW_FIELD_BOOLEAN);
  add("isNormalized", QXW_FIELD_BOOLEAN);
  for (const char* name : {"isSNMPSupported", "isInterface", "isLocation", "isNetwork", "isSegment",
                           "isRouter", "isNode"}) {
    add(name, QXW_FIELD_BOOLEAN, true);
  }
  add("TopM Interface List", QXW_FIELD_STRING, false, true);
  for (const char* name : {"TopM Node ID", "TopM Segment ID", "TopM Network ID", "Location ID"}) {
    add(name, QXW_FIELD_INTEGER);
  }
  QXwFieldId id = 0;
  for (FieldDef& d : f) d.id = ++id;
  return f;
}

FieldValue ParseFieldValue(const FieldDef& field, const Json& value, const std::string& entity) {
  FieldValue v;
  v.field = field.id;
  if (field.list) {
    if (!value.is_array()) {
      throw MapError(entity, "field " + Quote(field.name) + " is a list and takes an array");
    }
    for (const Json& element : value) v.list.push_back(ParseScalar(field, element, entity));
  } else {
    if (value.is_array()) {
      throw MapError(entity, "field " + Quote(field.name) + " is not a list field");
    }
    v.scalar = ParseScalar(field, value, entity);
  }
  return v;
}

}  // namespace qxwemu
