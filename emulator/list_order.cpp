// The order of served lists (see list_order.h), and the control command
// `order` that reports it.
#include "emulator/list_order.h"

#include <algorithm>
#include <utility>

#include "emulator/control_commands.h"
#include "emulator/surprises.h"

namespace qxwemu {

namespace {

enum class ListKind : uint64_t {
  kSubmapSymbols = 1,
  kObjectSymbols,
  kObjects,
  kObjectFields,
  kFields
};

uint64_t Mix(uint64_t x) {  // splitmix64's finalizer
  x += 0x9e3779b97f4a7c15ULL;
  x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ULL;
  x = (x ^ (x >> 27)) * 0x94d049bb133111ebULL;
  return x ^ (x >> 31);
}

// Sorts `items`, given in creation order, into the served order of the list
// (kind, container); `idOf` gives an item's id.
template <class T, class IdOf>
void Serve(ListKind kind, uint32_t container, std::vector<T>* items, IdOf idOf) {
  const Surprises& s = CurrentSurprises();
  if (s.order == ListOrder::kCreation || items->size() < 2) return;
  const uint64_t list = Mix(Mix(s.seed ^ (static_cast<uint64_t>(kind) << 32)) ^ container);
  std::vector<std::pair<uint64_t, T>> keyed;
  keyed.reserve(items->size());
  for (const T& item : *items) keyed.emplace_back(Mix(list ^ idOf(item)), item);
  std::stable_sort(keyed.begin(), keyed.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  for (size_t i = 0; i < keyed.size(); ++i) (*items)[i] = keyed[i].second;
}

uint32_t SymbolId(const Symbol* s) { return s->id; }

}  // namespace

std::vector<const Symbol*> ServedSymbols(const Submap& submap) {
  std::vector<const Symbol*> out(submap.symbols.begin(), submap.symbols.end());
  Serve(ListKind::kSubmapSymbols, submap.id, &out, SymbolId);
  return out;
}

std::vector<const Symbol*> ServedSymbols(const Object& object) {
  std::vector<const Symbol*> out(object.symbols.begin(), object.symbols.end());
  Serve(ListKind::kObjectSymbols, object.id, &out, SymbolId);
  return out;
}

std::vector<const FieldValue*> ServedFields(const Object& object) {
  std::vector<const FieldValue*> out;
  out.reserve(object.fields.size());
  for (const FieldValue& v : object.fields) out.push_back(&v);
  Serve(ListKind::kObjectFields, object.id, &out, [](const FieldValue* v) { return v->field; });
  return out;
}

std::vector<const FieldDef*> ServedFields(const Map& map) {
  std::vector<const FieldDef*> out;
  out.reserve(map.Fields().size());
  for (const FieldDef& f : map.Fields()) out.push_back(&f);
  Serve(ListKind::kFields, 0, &out, [](const FieldDef* f) { return f->id; });
  return out;
}

void ServeObjects(std::vector<QXwObjectId>* ids) {
  Serve(ListKind::kObjects, 0, ids, [](QXwObjectId id) { return id; });
}

// order submap ID | object ID | fields ID | objects | fields: the ids of the
// list in the order the platform serves it now (symbols of a submap on all
// planes, symbols of an object, the fields set on an object, every object as
// a query serves them, the fields of the database).
Json CmdOrder(const Words& w, std::string_view) {
  ExpectWords(w, 2, 3);
  Map& map = TheMap();
  Json ids = Json::array();
  const std::string& kind = w[1];
  if (w.size() == 3 && kind == "submap") {
    for (const Symbol* s : ServedSymbols(SubmapOf(map, ParseId(w[2])))) ids.push_back(s->id);
  } else if (w.size() == 3 && kind == "object") {
    for (const Symbol* s : ServedSymbols(ObjectOf(map, ParseId(w[2])))) ids.push_back(s->id);
  } else if (w.size() == 3 && kind == "fields") {
    for (const FieldValue* v : ServedFields(ObjectOf(map, ParseId(w[2])))) ids.push_back(v->field);
  } else if (w.size() == 2 && kind == "objects") {
    std::vector<QXwObjectId> all;
    for (const Object* o : map.ObjectsInOrder()) all.push_back(o->id);
    ServeObjects(&all);
    ids = std::move(all);
  } else if (w.size() == 2 && kind == "fields") {
    for (const FieldDef* f : ServedFields(map)) ids.push_back(f->id);
  } else {
    throw Refusal{"usage: order submap ID | object ID | fields ID | objects | fields"};
  }
  Json reply = Ok();
  reply["ids"] = std::move(ids);
  return reply;
}

}  // namespace qxwemu
