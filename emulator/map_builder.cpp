// Building a map from the streamed sections and elements of a map file (see
// map_builder.h).
#include "emulator/map_builder.h"

#include <utility>

#include "emulator/map_checks.h"
#include "emulator/map_fields.h"
#include "emulator/map_keys.h"

namespace qxwemu {

namespace {

// The name of an entity in messages: "kind ID".
std::string IdName(const char* kind, uint32_t id) {
  return std::string(kind) + " " + std::to_string(id);
}

}  // namespace

MapBuilder::MapBuilder(const std::vector<FieldDef>* knownFields) {
  map_ = std::make_unique<Map>();
  if (knownFields != nullptr) {
    map_->SetFields(*knownFields);
    fieldsFinal_ = true;
    fieldsFromEarlierPass_ = true;
  }
}

void MapBuilder::AddObject(const Json& element, size_t position) {
  Object object = ParseObject(element, *map_, position);
  if (map_->FindObject(object.id) != nullptr)
    throw MapError(IdName("object", object.id), "id is used twice");
  for (const FieldValue& v : object.fields) CheckSelectionNameFree(*map_, object, v);
  map_->AddObject(std::move(object));
}

void MapBuilder::Section(const std::string& key, Json& value) {
  if (key == "map") {
    Reader r(value, "map");
    map_->name = r.Str("name");
    map_->permissions = static_cast<int>(r.Int("permissions", 0, kMaxInt));
    if (map_->permissions != QXW_MAP_READ_ONLY && map_->permissions != QXW_MAP_READ_WRITE) {
      throw MapError("map", "\"permissions\" must be 1 (read-only) or 2 (read-write)");
    }
    map_->rootSubmap = r.Id("rootSubmap");
    map_->creationTime = static_cast<time_t>(r.Int("creationTime", 0, kMaxInt));
    map_->lastClosedTime = static_cast<time_t>(r.Int("lastClosedTime", 0, kMaxInt));
    r.Done();
    sawMap_ = true;
  } else if (key == "standardFields" || key == "fields") {
    if (fieldsFromEarlierPass_) return;
    if (!fieldsFinal_) fieldSectionsSeen_ = true;
    if (key == "standardFields") {
      if (!value.is_boolean()) throw MapError("standardFields", "must be true or false");
      standard_ = value.get<bool>();
    } else {
      fieldDefs_ = std::move(value);
    }
    if (fieldsFinal_) needsSecondPass_ = true;
  } else {
    throw MapError(Quote(key), IsElementArray(key) ? "must be an array" : "is not a map file key");
  }
}

void MapBuilder::Element(const std::string& key, Json& element, size_t position) {
  if (key == "objects") {
    FreezeFields();
    if (needsSecondPass_) return;
    // Until the file has said what its fields are, an object may use a
    // field defined further on: its violation waits for the end.
    try {
      AddObject(element, position);
    } catch (const MapError& e) {
      if (fieldSectionsSeen_ || fieldsFromEarlierPass_) throw;
      if (!deferred_) deferred_ = e;
    }
  } else if (key == "submaps") {
    Submap submap = ParseSubmap(element, position);
    if (map_->FindSubmap(submap.id) != nullptr)
      throw MapError(IdName("submap", submap.id), "id is used twice");
    map_->AddSubmap(std::move(submap));
  } else {
    // A symbol is linked to its submap and object at once when both are
    // known; otherwise it waits, with every symbol after it, for the end
    // of the file. References to other symbols are checked at the end.
    Symbol symbol = ParseSymbol(element, *map_, position);
    if (map_->FindSymbol(symbol.id) != nullptr || pendingIds_.count(symbol.id) != 0) {
      throw MapError(IdName("symbol", symbol.id), "id is used twice");
    }
    if (pendingSymbols_.empty() && map_->FindSubmap(symbol.submap) != nullptr &&
        map_->FindObject(symbol.object) != nullptr) {
      map_->AddSymbol(std::move(symbol));
    } else {
      pendingIds_.insert(symbol.id);
      pendingSymbols_.push_back(std::move(symbol));
    }
  }
}

std::unique_ptr<Map> MapBuilder::Finish() {
  FreezeFields();
  if (deferred_) throw *deferred_;
  if (!sawMap_) throw MapError("map", "the \"map\" section is missing");
  Map& map = *map_;
  for (Object* o : std::vector<Object*>(map.ObjectsInOrder())) CheckObjectRefs(map, *o);
  for (const Submap* s : map.SubmapsInOrder()) CheckSubmapRefs(map, *s);
  if (map.FindSubmap(map.rootSubmap) == nullptr) {
    throw MapError("map", "rootSubmap " + std::to_string(map.rootSubmap) + " does not exist");
  }
  for (Symbol& s : pendingSymbols_) {
    if (map.FindSubmap(s.submap) == nullptr) {
      throw MapError(IdName("symbol", s.id),
                     "submap " + std::to_string(s.submap) + " does not exist");
    }
    if (map.FindObject(s.object) == nullptr) {
      throw MapError(IdName("symbol", s.id),
                     "object " + std::to_string(s.object) + " does not exist");
    }
  }
  for (Symbol& s : pendingSymbols_) map.AddSymbol(std::move(s));
  const std::vector<const Symbol*> symbols = map.SymbolsInOrder();
  for (const Symbol* s : symbols) CheckSymbolRefs(map, *s);
  CheckPredecessorLoops(map, symbols);
  return std::move(map_);
}

std::vector<FieldDef> MapBuilder::FieldTable() {
  return BuildFieldTable(standard_, fieldDefs_.is_null() ? nullptr : &fieldDefs_);
}

void MapBuilder::FreezeFields() {
  if (fieldsFinal_) return;
  map_->SetFields(FieldTable());
  fieldsFinal_ = true;
}

}  // namespace qxwemu
