// The control commands that change submaps, objects and field values:
// create and delete them, switch a submap's automatic layout, set a field.
#include <algorithm>
#include <cctype>
#include <cstdint>
#include <set>
#include <string>

#include "emulator/control_commands.h"
#include "emulator/records.h"

namespace qxwemu {

// create-submap JSON: one submap in map file form; the id is the next free
// one unless given.
Json CmdCreateSubmap(const Words&, std::string_view line) {
  std::string_view rest = AfterWords(line, 1);
  Map& map = TheMap();
  Submap submap = ParseSubmap(WithId(ParseJsonArgument(rest), map.NextSubmapId()), 1);
  if (map.FindSubmap(submap.id) != nullptr) {
    throw Refusal{"submap " + std::to_string(submap.id) + " already exists"};
  }
  Object* parent = nullptr;
  if (submap.parentObject != 0) {
    parent = map.FindObject(submap.parentObject);
    if (parent == nullptr) {
      throw Refusal{"object " + std::to_string(submap.parentObject) + " does not exist"};
    }
    if (parent->childSubmap != 0) {
      throw Refusal{"object " + std::to_string(parent->id) + " already has child submap " +
                    std::to_string(parent->childSubmap)};
    }
  }
  uint32_t id = submap.id;
  const Submap& added = map.AddSubmap(std::move(submap));
  if (parent != nullptr) parent->childSubmap = id;
  Event e;
  e.code = QXW_EVENT_SUBMAPS_CREATED;
  e.submaps = BuildSubmapList({&added});
  Queue(e);
  return Created(id);
}

// delete-submaps ID...: the submaps go with every symbol on them and the
// connections attached to those; their parent objects stay, without a
// child submap. Where deletions cascade, more may follow (CascadeRemoval).
Json CmdDeleteSubmaps(const Words& w, std::string_view) {
  Map& map = TheMap();
  std::vector<uint32_t> ids = ParseIds(w, 1);
  for (uint32_t id : ids) SubmapOf(map, id);
  QueueAndRemove(
      map, CurrentSurprises().cascade ? map.CascadeRemoval({}, ids, {}) : map.SubmapsRemoval(ids));
  return Ok();
}

// autolayout ID FLAG
Json CmdAutolayout(const Words& w, std::string_view) {
  ExpectWords(w, 3, 3);
  Map& map = TheMap();
  Submap* s = &SubmapOf(map, ParseId(w[1]));
  s->layoutOn = ParseFlag(w[2]);
  Event e;
  e.code = QXW_EVENT_SUBMAP_AUTOLAYOUT;
  e.submaps = BuildSubmapList({s});
  Queue(e);
  return Ok();
}

// create-object JSON: one object, or an array of objects made together in
// one event. Every object is checked before any is added.
Json CmdCreateObject(const Words&, std::string_view line) {
  std::string_view rest = AfterWords(line, 1);
  Map& map = TheMap();
  Json argument = Json::parse(rest.begin(), rest.end(), nullptr, false);
  const bool many = argument.is_array();
  if (!many) argument = Json::array({ParseJsonArgument(rest)});
  if (argument.empty()) throw Refusal{"no object was given"};

  std::vector<Object> objects;
  std::set<QXwObjectId> ids;
  std::set<std::string> names;
  std::set<QXwSubmapId> children;
  const FieldDef* selectionName = map.FieldByName("Selection Name");
  QXwObjectId next = map.NextObjectId();
  for (size_t i = 0; i < argument.size(); ++i) {
    if (argument[i].is_object() && !argument[i].contains("id")) {
      while (ids.count(next) != 0) ++next;
      argument[i]["id"] = next;
    }
    Object object = ParseObject(argument[i], map, i + 1);
    if (map.FindObject(object.id) != nullptr || !ids.insert(object.id).second) {
      throw Refusal{"object " + std::to_string(object.id) + " already exists"};
    }
    for (const FieldValue& v : object.fields) {
      CheckSelectionNameFree(map, object, v);
      if (selectionName != nullptr && v.field == selectionName->id &&
          !names.insert(v.scalar.text).second) {
        throw Refusal{"selection name \"" + v.scalar.text + "\" is given twice"};
      }
    }
    if (object.childSubmap != 0) {
      const Submap* child = map.FindSubmap(object.childSubmap);
      if (child == nullptr) {
        throw Refusal{"submap " + std::to_string(object.childSubmap) + " does not exist"};
      }
      if (child->parentObject != 0 || !children.insert(child->id).second) {
        throw Refusal{"submap " + std::to_string(child->id) + " already has a parent object"};
      }
    }
    objects.push_back(std::move(object));
  }

  std::vector<const Object*> added;
  Json created = Json::array();
  for (Object& object : objects) {
    created.push_back(object.id);
    if (Submap* child = map.FindSubmap(object.childSubmap)) child->parentObject = object.id;
    added.push_back(&map.AddObject(std::move(object)));
  }
  Event e;
  e.code = QXW_EVENT_OBJECTS_CREATED;
  e.objects = BuildObjectList(map, added);
  Queue(e);
  if (!many) return Created(created[0]);
  Json reply = Ok();
  reply["ids"] = std::move(created);
  return reply;
}

// delete-objects ID...: the objects go with their symbols and their child
// submaps, which take every symbol on them (the objects of those symbols
// stay), and with the connections attached to any symbol that goes. Where
// deletions cascade, more may follow (CascadeRemoval).
Json CmdDeleteObjects(const Words& w, std::string_view) {
  Map& map = TheMap();
  std::vector<uint32_t> ids = ParseIds(w, 1);
  for (uint32_t id : ids) ObjectOf(map, id);
  QueueAndRemove(
      map, CurrentSurprises().cascade ? map.CascadeRemoval({}, {}, ids) : map.ObjectsRemoval(ids));
  return Ok();
}

// set-field OBJECT FIELD VALUE: FIELD by name (or id); VALUE as the field's
// text form, or a JSON array for a list field.
Json CmdSetField(const Words& w, std::string_view line) {
  if (w.size() < 4) throw Refusal{"usage: set-field OBJECT FIELD VALUE"};
  Map& map = TheMap();
  uint32_t objectId = ParseId(w[1]);
  Object* object = &ObjectOf(map, objectId);
  const FieldDef* field = map.FieldByName(w[2]);
  if (field == nullptr &&
      std::all_of(w[2].begin(), w[2].end(), [](unsigned char c) { return std::isdigit(c); }) &&
      !w[2].empty()) {
    field = map.FieldById(ParseId(w[2]));
  }
  if (field == nullptr) throw Refusal{"field \"" + w[2] + "\" does not exist"};
  const std::string entity = "object " + std::to_string(objectId);
  Json value;
  if (field->list) {
    // The value is the rest of the line after the field word.
    std::string_view rest = AfterWords(line, 3);
    value = Json::parse(rest.begin(), rest.end(), nullptr, false);
    if (value.is_discarded()) throw Refusal{"the value of a list field must be a JSON array"};
  } else {
    ExpectWords(w, 4, 4);
    const std::string& text = w[3];
    switch (field->type) {
      case QXW_FIELD_INTEGER:
        value = ParseInteger(text, INT32_MIN, 4294967295LL, "the value");
        break;
      case QXW_FIELD_BOOLEAN:
        if (text == "TRUE" || text == "true" || text == "1") {
          value = true;
        } else if (text == "FALSE" || text == "false" || text == "0") {
          value = false;
        } else {
          throw Refusal{"a boolean value is TRUE or FALSE, not \"" + text + "\""};
        }
        break;
      case QXW_FIELD_ENUMERATION:
        if (!text.empty() && std::all_of(text.begin(), text.end(), ::isdigit)) {
          value = ParseInteger(text, 0, INT32_MAX, "the value");
        } else {
          value = text;
        }
        break;
      default:
        value = text;
    }
  }
  FieldValue parsed = ParseFieldValue(*field, value, entity);
  CheckSelectionNameFree(map, *object, parsed);
  map.SetField(*object, std::move(parsed));
  return Ok();
}

}  // namespace qxwemu
