// qxw-monitor: a minimal map application. Opens a session, registers for
// every event the platform delivers, and prints each event as one JSON line
// on standard output until the session ends.
//
//   qxw-monitor [--interfaces-only]
//
// --interfaces-only registers the object events with the filter
// isInterface = TRUE, so that only interface objects are reported.
#include <cstdio>
#include <cstring>
#include <map>
#include <string>

#include <nlohmann/json.hpp>

#include "platform/qxw.h"
#include "platform/qxwdb.h"

namespace {

using Json = nlohmann::ordered_json;

std::map<QXwFieldId, std::string> g_fieldNames;

void LoadFieldNames() {
  g_fieldNames.clear();
  QXwFieldList* fields = QXwDbListFields(0);
  if (fields == nullptr) return;
  for (int i = 0; i < fields->count; ++i) {
    g_fieldNames[fields->field_list[i].field_id] = fields->field_list[i].field_name;
  }
  QXwDbFreeFieldList(fields);
}

Json Text(const char* s) { return s == nullptr ? Json() : Json(s); }

Json MapJson(const QXwMapInfo* map) {
  if (map == nullptr) return Json();
  return {{"name", Text(map->map_name)},
          {"permissions", map->permissions},
          {"rootSubmap", map->root_submap_id}};
}

Json SymbolJson(const QXwSymbolInfo& s) {
  Json apps = Json::array();
  for (int i = 0; i < s.apps.count; ++i) apps.push_back(Text(s.apps.names[i]));
  Json j = {{"id", s.symbol_id},
            {"submap", s.submap_id},
            {"object", s.object.object_id},
            {"label", Text(s.symbol_label)},
            {"type", Text(s.symbol_type)},
            {"variety", s.symbol_variety},
            {"plane", s.plane},
            {"hidden", s.hidden != 0},
            {"status", s.symbol_status},
            {"statusSource", s.status_source},
            {"apps", apps}};
  if (s.symbol_variety == QXW_SYMBOL_CONNECTION) {
    j["endpoint1"] = s.var_un.conninfo.endpoint1_id;
    j["endpoint2"] = s.var_un.conninfo.endpoint2_id;
    j["metaConnection"] = s.var_un.conninfo.is_meta_conn != 0;
  } else {
    const QXwSymbolPosition& p = s.var_un.position;
    j["placement"] = p.placement;
    if (p.placement == QXW_PLACEMENT_AFTER) {
      j["pred"] = p.un.pred_symbol;
    } else {
      j["x"] = p.un.coords.x;
      j["y"] = p.un.coords.y;
    }
  }
  return j;
}

Json SubmapJson(const QXwSubmapInfo& s) {
  return {{"id", s.submap_id},
          {"name", Text(s.submap_name)},
          {"app", Text(s.app_name)},
          {"policy", s.submap_policy},
          {"parentObject", s.parent_object_id},
          {"layoutOn", s.layout_on != 0}};
}

Json ValueJson(const QXwFieldValue* v) {
  if (v == nullptr) return Json();
  auto scalar = [&](int type, int number, const char* text) -> Json {
    switch (type) {
      case QXW_FIELD_BOOLEAN:
        return number == 1;
      case QXW_FIELD_STRING:
        return Text(text);
      default:
        return number;
    }
  };
  if (!v->is_list) return scalar(v->field_type, v->un.int_val, v->un.string_val);
  Json list = Json::array();
  for (int i = 0; v->un.list_val != nullptr && i < v->un.list_val->count; ++i) {
    const QXwListFieldEntry& e = v->un.list_val->list[i];
    list.push_back(scalar(v->field_type, e.int_val, e.string_val));
  }
  return list;
}

Json ObjectJson(const QXwObjectInfo& o) {
  Json fields = Json::object();
  for (int i = 0; o.field_values != nullptr && i < o.field_values->count; ++i) {
    const QXwFieldBinding& b = o.field_values->fields[i];
    auto name = g_fieldNames.find(b.field_id);
    fields[name != g_fieldNames.end() ? name->second : std::to_string(b.field_id)] =
        ValueJson(b.field_val);
  }
  return {{"id", o.object_id}, {"childSubmap", o.child_submap_id}, {"fields", fields}};
}

void Print(const Json& j) {
  std::printf("%s\n", j.dump(-1, ' ', false, Json::error_handler_t::replace).c_str());
  std::fflush(stdout);
}

Json Event(int code) { return Json{{"event", code}}; }

void OnEndSession(void*, int code, QXwBoolean normalEnd) {
  Json j = Event(code);
  j["normalEnd"] = normalEnd != 0;
  Print(j);
  QXwDone();
}

void OnMapOpen(void*, int code, QXwMapInfo* map, QXwFieldBindList*) {
  LoadFieldNames();
  Json j = Event(code);
  j["map"] = MapJson(map);
  Print(j);
}

void OnMapClose(void*, int code, QXwMapInfo* map, time_t) {
  Json j = Event(code);
  j["map"] = MapJson(map);
  Print(j);
  QXwAckMapClose(map, 0);
}

void OnSymbols(void*, int code, QXwMapInfo*, QXwSymbolList* list) {
  Json j = Event(code);
  Json symbols = Json::array();
  for (int i = 0; list != nullptr && i < list->count; ++i)
    symbols.push_back(SymbolJson(list->symbols[i]));
  j["symbols"] = symbols;
  Print(j);
}

void OnSymbol(void*, int code, QXwMapInfo*, QXwSymbolInfo* symbol) {
  Json j = Event(code);
  j["symbol"] = SymbolJson(*symbol);
  Print(j);
}

void OnNormalize(void*, int code, QXwMapInfo*, QXwSymbolInfo* symbol, QXwBoolean normalized) {
  Json j = Event(code);
  j["symbol"] = SymbolJson(*symbol);
  j["isNormalized"] = normalized != 0;
  Print(j);
}

void OnSubmaps(void*, int code, QXwMapInfo*, QXwSubmapList* list) {
  Json j = Event(code);
  Json submaps = Json::array();
  for (int i = 0; list != nullptr && i < list->count; ++i)
    submaps.push_back(SubmapJson(list->submaps[i]));
  j["submaps"] = submaps;
  Print(j);
}

void OnSubmap(void*, int code, QXwMapInfo*, QXwSubmapInfo* submap) {
  Json j = Event(code);
  j["submap"] = SubmapJson(*submap);
  Print(j);
}

void OnObjects(void*, int code, QXwMapInfo*, QXwObjectList* list) {
  Json j = Event(code);
  Json objects = Json::array();
  for (int i = 0; list != nullptr && i < list->count; ++i)
    objects.push_back(ObjectJson(list->objects[i]));
  j["objects"] = objects;
  Print(j);
}

template <class Proc>
bool Register(int code, Proc proc, QXwFieldBindList* filter = nullptr) {
  if (QXwAddCallback(code, filter, reinterpret_cast<QXwCallbackProc>(proc), nullptr) < 0) {
    std::fprintf(stderr, "qxw-monitor: QXwAddCallback(%d) failed: %s\n", code,
                 QXwErrorMsg(QXwError()));
    return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  bool interfacesOnly = false;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--interfaces-only") == 0) {
      interfacesOnly = true;
    } else {
      std::fprintf(stderr, "usage: qxw-monitor [--interfaces-only]\n");
      return 2;
    }
  }
  if (QXwInit() != 0 && QXwError() != QXW_ERR_NO_MAP_INFO) {
    std::fprintf(stderr, "qxw-monitor: QXwInit failed: %s\n", QXwErrorMsg(QXwError()));
    return 1;
  }
  LoadFieldNames();
  // The filter lives as long as the registrations that point to it.
  QXwFieldValue isTrue{};
  isTrue.field_type = QXW_FIELD_BOOLEAN;
  isTrue.un.bool_val = 1;
  QXwFieldBinding binding{QXwDbFieldNameToFieldId("isInterface"), &isTrue};
  QXwFieldBindList filter{1, &binding};
  QXwFieldBindList* objectFilter = interfacesOnly ? &filter : nullptr;

  bool ok = Register(QXW_EVENT_END_SESSION, OnEndSession) &&
            Register(QXW_EVENT_SYMBOLS_HIDDEN, OnSymbols) &&
            Register(QXW_EVENT_SYMBOLS_UNHIDDEN, OnSymbols) &&
            Register(QXW_EVENT_SYMBOLS_STATUS, OnSymbols) &&
            Register(QXW_EVENT_SYMBOLS_CREATED, OnSymbols) &&
            Register(QXW_EVENT_SYMBOL_MOVED, OnSymbol) &&
            Register(QXW_EVENT_SYMBOLS_DELETED, OnSymbols) &&
            Register(QXW_EVENT_SYMBOL_NORMALIZE, OnNormalize) &&
            Register(QXW_EVENT_SUBMAPS_CREATED, OnSubmaps) &&
            Register(QXW_EVENT_SUBMAPS_DELETED, OnSubmaps) &&
            Register(QXW_EVENT_SUBMAP_AUTOLAYOUT, OnSubmap) &&
            Register(QXW_EVENT_MAP_OPEN, OnMapOpen) && Register(QXW_EVENT_MAP_CLOSE, OnMapClose) &&
            Register(QXW_EVENT_OBJECTS_CREATED, OnObjects, objectFilter) &&
            Register(QXW_EVENT_OBJECTS_DELETED, OnObjects, objectFilter);
  if (!ok) return 1;
  QXwMapInfo* map = QXwGetMapInfo();
  std::fprintf(stderr, "qxw-monitor: session open, map \"%s\"\n",
               map != nullptr ? map->map_name : "");
  QXwFreeMapInfo(map);
  while (QXwProcessEvent() >= 0) {
  }
  return 0;
}
