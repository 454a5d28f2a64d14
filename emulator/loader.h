// Map files: loading with complete validation, and the dump back to the same
// form. The element converters are shared with the control protocol, whose
// create-* commands take one element of a map file.
#ifndef SKIFF_EMULATOR_LOADER_H_
#define SKIFF_EMULATOR_LOADER_H_

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "emulator/model.h"

namespace qxwemu {

using Json = nlohmann::ordered_json;

// A violation: `what()` is "entity: problem", for example
// "symbol 42: submap 7 does not exist".
class MapError : public std::runtime_error {
 public:
  MapError(const std::string& entity, const std::string& problem)
      : std::runtime_error(entity + ": " + problem) {}
};

// The fields every map has unless it says "standardFields": false.
std::vector<FieldDef> StandardFields();

// Loads a map from its text. `origin` names the file in messages. On any
// violation returns null and sets `*error` to "origin: entity: problem".
std::unique_ptr<Map> LoadMap(std::string_view text, const std::string& origin, std::string* error);
// Reads and loads a file; messages name it by `path`.
std::unique_ptr<Map> LoadMapFile(const std::string& path, std::string* error);
// The embedded default map (named "default.json" in messages).
std::unique_ptr<Map> LoadDefaultMap(std::string* error);
std::string_view DefaultMapText();

// Element converters; they throw MapError. `position` (1-based) names an
// element that has no valid id.
Object ParseObject(const Json& element, const Map& map, size_t position);
Submap ParseSubmap(const Json& element, size_t position);
Symbol ParseSymbol(const Json& element, Map& map, size_t position);
// A value of `field` in map file form (for list fields, an array).
FieldValue ParseFieldValue(const FieldDef& field, const Json& value, const std::string& entity);

// Reference checks of one entity against the map; they throw MapError.
void CheckObjectRefs(Map& map, const Object& object);
void CheckSubmapRefs(Map& map, const Submap& submap);
// A symbol's submap and object exist, its pred is an icon of its own submap,
// and a connection's endpoints are other symbols than itself.
void CheckSymbolRefs(Map& map, const Symbol& symbol);
// The loop of predecessors that placing symbol `id` after `pred` would close,
// written "104 after 103 after 104"; empty when following `pred` from `id`
// never comes back to `id`. Removing symbols relinks the ones after them by
// walking predecessors, so a loop must never enter the map. The walk takes at
// most one step per symbol of the map.
std::string PredecessorLoop(Map& map, QXwSymbolId id, QXwSymbolId pred);
// Fails when another object already carries the object's selection name.
void CheckSelectionNameFree(const Map& map, const Object& object, const FieldValue& value);

// The map in map file form.
Json DumpMap(const Map& map);
Json DumpValue(const FieldDef& field, const FieldValue& value);

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_LOADER_H_
