// Checks of the entities of a map against each other: that what an entity
// refers to exists and fits, that predecessors never loop, and that
// selection names stay unique.
#include "emulator/map_checks.h"

#include <unordered_map>

#include "emulator/map_keys.h"

namespace qxwemu {

namespace {

const char* const kSelectionName = "Selection Name";

}  // namespace

void CheckPredecessorLoops(Map& map, const std::vector<const Symbol*>& symbols) {
  enum : char { kOnWalk = 1, kCleared = 2 };
  std::unordered_map<QXwSymbolId, char> state;
  std::vector<QXwSymbolId> walk;
  for (const Symbol* start : symbols) {
    walk.clear();
    const Symbol* at = start;
    while (at != nullptr && at->pred != 0 && state.emplace(at->id, kOnWalk).second) {
      walk.push_back(at->id);
      at = map.FindSymbol(at->pred);
    }
    if (at != nullptr && at->pred != 0 && state[at->id] == kOnWalk) {
      throw MapError("symbol " + std::to_string(at->id),
                     "pred " + std::to_string(at->pred) +
                         " makes a loop: " + PredecessorLoop(map, at->id, at->pred));
    }
    for (QXwSymbolId id : walk) state[id] = kCleared;
  }
}

void CheckSelectionNameFree(const Map& map, const Object& object, const FieldValue& value) {
  const FieldDef* def = map.FieldById(value.field);
  if (def == nullptr || def->name != kSelectionName || def->list) return;
  if (const std::vector<Object*>* owners = map.Lookup(*def, value.scalar)) {
    for (const Object* owner : *owners) {
      if (owner->id != object.id) {
        throw MapError("object " + std::to_string(object.id),
                       "selection name " + Quote(value.scalar.text) +
                           " is already used by object " + std::to_string(owner->id));
      }
    }
  }
}

void CheckObjectRefs(Map& map, const Object& o) {
  if (o.childSubmap == 0) return;
  const std::string entity = "object " + std::to_string(o.id);
  const Submap* child = map.FindSubmap(o.childSubmap);
  if (child == nullptr) {
    throw MapError(entity, "childSubmap " + std::to_string(o.childSubmap) + " does not exist");
  }
  if (child->parentObject != o.id) {
    throw MapError(entity, "childSubmap " + std::to_string(o.childSubmap) + " has parentObject " +
                               std::to_string(child->parentObject));
  }
}

void CheckSubmapRefs(Map& map, const Submap& s) {
  if (s.parentObject == 0) return;
  const std::string entity = "submap " + std::to_string(s.id);
  const Object* parent = map.FindObject(s.parentObject);
  if (parent == nullptr) {
    throw MapError(entity, "parentObject " + std::to_string(s.parentObject) + " does not exist");
  }
  if (parent->childSubmap != s.id) {
    throw MapError(entity, "parentObject " + std::to_string(s.parentObject) + " has childSubmap " +
                               std::to_string(parent->childSubmap));
  }
}

void CheckSymbolRefs(Map& map, const Symbol& s) {
  const std::string entity = "symbol " + std::to_string(s.id);
  if (map.FindSubmap(s.submap) == nullptr) {
    throw MapError(entity, "submap " + std::to_string(s.submap) + " does not exist");
  }
  if (map.FindObject(s.object) == nullptr) {
    throw MapError(entity, "object " + std::to_string(s.object) + " does not exist");
  }
  if (s.variety == QXW_SYMBOL_ICON && s.pred != 0) {
    const Symbol* pred = map.FindSymbol(s.pred);
    if (pred == nullptr)
      throw MapError(entity, "pred " + std::to_string(s.pred) + " does not exist");
    if (pred->submap != s.submap) {
      throw MapError(entity, "pred " + std::to_string(s.pred) + " lies on another submap");
    }
    // Only an icon has a place in a submap's sequence to follow.
    if (pred->variety != QXW_SYMBOL_ICON) {
      throw MapError(entity, "pred " + std::to_string(s.pred) + " is a connection");
    }
  }
  if (s.variety == QXW_SYMBOL_CONNECTION) {
    for (QXwSymbolId endpoint : {s.endpoint1, s.endpoint2}) {
      const std::string name = "endpoint " + std::to_string(endpoint);
      if (endpoint == s.id) throw MapError(entity, name + " is the connection itself");
      const Symbol* end = map.FindSymbol(endpoint);
      if (end == nullptr) throw MapError(entity, name + " does not exist");
      if (end->submap != s.submap) throw MapError(entity, name + " lies on another submap");
    }
  }
}

std::string PredecessorLoop(Map& map, QXwSymbolId id, QXwSymbolId pred) {
  // Find the loop first, and write it out only when there is one.
  bool loops = false;
  QXwSymbolId at = pred;
  for (size_t steps = 0; at != 0 && steps <= map.SymbolCount() && !loops; ++steps) {
    loops = at == id;
    const Symbol* s = map.FindSymbol(at);
    at = s == nullptr ? 0 : s->pred;
  }
  if (!loops) return {};
  std::string chain = std::to_string(id);
  for (at = pred;; at = map.FindSymbol(at)->pred) {
    chain += " after " + std::to_string(at);
    if (at == id) return chain;
  }
}

}  // namespace qxwemu
