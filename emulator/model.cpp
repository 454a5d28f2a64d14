#include "emulator/model.h"

#include <algorithm>

#include "emulator/erase.h"

namespace qxwemu {

namespace {

// Inserts `object` into a bucket kept in creation order.
void InsertOrdered(std::vector<Object*>& bucket, Object* object) {
  if (bucket.empty() || bucket.back()->seq < object->seq) {
    bucket.push_back(object);
    return;
  }
  auto at = std::lower_bound(bucket.begin(), bucket.end(), object->seq,
                             [](const Object* o, uint64_t seq) { return o->seq < seq; });
  bucket.insert(at, object);
}

void EraseOrdered(std::vector<Object*>& bucket, const Object* object) {
  auto at = std::lower_bound(bucket.begin(), bucket.end(), object->seq,
                             [](const Object* o, uint64_t seq) { return o->seq < seq; });
  if (at != bucket.end() && *at == object) bucket.erase(at);
}

template <class Entity>
std::vector<const Entity*> InOrder(const std::unordered_map<uint32_t, Entity>& all) {
  std::vector<const Entity*> out;
  out.reserve(all.size());
  for (const auto& [id, entity] : all) out.push_back(&entity);
  std::sort(out.begin(), out.end(),
            [](const Entity* a, const Entity* b) { return a->seq < b->seq; });
  return out;
}

}  // namespace

const FieldValue* Object::Find(QXwFieldId field) const {
  for (const FieldValue& v : fields) {
    if (v.field == field) return &v;
  }
  return nullptr;
}

Map::Map() = default;
Map::~Map() = default;

void Map::SetFields(std::vector<FieldDef> fields) {
  fields_ = std::move(fields);
  fieldById_.clear();
  fieldByName_.clear();
  index_.clear();
  for (size_t i = 0; i < fields_.size(); ++i) {
    fieldById_[fields_[i].id] = i;
    fieldByName_[fields_[i].name] = i;
  }
}

const FieldDef* Map::FieldById(QXwFieldId id) const {
  auto it = fieldById_.find(id);
  return it == fieldById_.end() ? nullptr : &fields_[it->second];
}

const FieldDef* Map::FieldByName(const std::string& name) const {
  auto it = fieldByName_.find(name);
  return it == fieldByName_.end() ? nullptr : &fields_[it->second];
}

Object* Map::FindObject(QXwObjectId id) {
  auto it = objects_.find(id);
  return it == objects_.end() ? nullptr : &it->second;
}

Submap* Map::FindSubmap(QXwSubmapId id) {
  auto it = submaps_.find(id);
  return it == submaps_.end() ? nullptr : &it->second;
}

Symbol* Map::FindSymbol(QXwSymbolId id) {
  auto it = symbols_.find(id);
  return it == symbols_.end() ? nullptr : &it->second;
}

std::vector<const Submap*> Map::SubmapsInOrder() const { return InOrder(submaps_); }
std::vector<const Symbol*> Map::SymbolsInOrder() const { return InOrder(symbols_); }

const std::string* Map::InternType(const std::string& type) {
  return &*typePool_.insert(type).first;
}

const AppList* Map::InternApps(AppList apps) { return &*appPool_.insert(std::move(apps)).first; }

Object& Map::AddObject(Object object) {
  object.seq = nextSeq_++;
  object.symbols.clear();
  maxObjectId_ = std::max(maxObjectId_, object.id);
  Object& stored = objects_.emplace(object.id, std::move(object)).first->second;
  objectOrder_.push_back(&stored);
  for (const FieldValue& v : stored.fields) IndexValue(stored, v);
  return stored;
}

Submap& Map::AddSubmap(Submap submap) {
  submap.seq = nextSeq_++;
  submap.symbols.clear();
  maxSubmapId_ = std::max(maxSubmapId_, submap.id);
  return submaps_.emplace(submap.id, std::move(submap)).first->second;
}

Symbol& Map::AddSymbol(Symbol symbol) {
  symbol.seq = nextSeq_++;
  maxSymbolId_ = std::max(maxSymbolId_, symbol.id);
  Symbol& stored = symbols_.emplace(symbol.id, std::move(symbol)).first->second;
  FindSubmap(stored.submap)->symbols.push_back(&stored);
  FindObject(stored.object)->symbols.push_back(&stored);
  if (stored.variety == QXW_SYMBOL_CONNECTION) {
    attached_[stored.endpoint1].push_back(stored.id);
    if (stored.endpoint2 != stored.endpoint1) attached_[stored.endpoint2].push_back(stored.id);
  }
  return stored;
}

std::vector<Object*>* Map::Bucket(const FieldDef& field, const Scalar& value, bool create) {
  auto fieldIt = index_.find(field.id);
  if (fieldIt == index_.end()) {
    if (!create) return nullptr;
    fieldIt = index_.emplace(field.id, FieldIndex()).first;
  }
  FieldIndex& idx = fieldIt->second;
  if (field.type == QXW_FIELD_STRING) {
    auto it = idx.byText.find(value.text);
    if (it == idx.byText.end()) {
      if (!create) return nullptr;
      it = idx.byText.emplace(value.text, std::vector<Object*>()).first;
    }
    return &it->second;
  }
  auto key = static_cast<uint32_t>(value.num);
  auto it = idx.byNum.find(key);
  if (it == idx.byNum.end()) {
    if (!create) return nullptr;
    it = idx.byNum.emplace(key, std::vector<Object*>()).first;
  }
  return &it->second;
}

void Map::IndexValue(Object& object, const FieldValue& value) {
  const FieldDef* field = FieldById(value.field);
  if (field == nullptr || field->list) return;
  InsertOrdered(*Bucket(*field, value.scalar, true), &object);
}

void Map::UnindexValue(const Object& object, const FieldValue& value) {
  const FieldDef* field = FieldById(value.field);
  if (field == nullptr || field->list) return;
  if (std::vector<Object*>* bucket = Bucket(*field, value.scalar, false)) {
    EraseOrdered(*bucket, &object);
  }
}

const std::vector<Object*>* Map::Lookup(const FieldDef& field, const Scalar& key) const {
  return const_cast<Map*>(this)->Bucket(field, key, false);
}

void Map::SetField(Object& object, FieldValue value) {
  for (FieldValue& existing : object.fields) {
    if (existing.field == value.field) {
      UnindexValue(object, existing);
      existing = std::move(value);
      IndexValue(object, existing);
      return;
    }
  }
  object.fields.push_back(std::move(value));
  IndexValue(object, object.fields.back());
}

QXwSymbolId Map::LivePredecessor(const Symbol& symbol,
                                 const std::unordered_set<const Symbol*>& dead) {
  QXwSymbolId pred = symbol.pred;
  // A chain of distinct removed symbols is at most dead.size() long: one
  // more removed symbol means the chain has come round a loop.
  for (size_t passed = 0; pred != 0; ++passed) {
    const Symbol* p = FindSymbol(pred);
    if (p == nullptr || dead.count(p) == 0) break;
    if (passed == dead.size()) return 0;
    pred = p->pred;
  }
  return pred == symbol.id ? 0 : pred;
}

void Map::UnlinkSymbols(const std::unordered_set<const Symbol*>& dead) {
  if (dead.empty()) return;
  auto isDead = [&](const Symbol* s) { return dead.count(s) != 0; };
  std::unordered_set<Submap*> submaps;
  std::unordered_set<Object*> objects;
  for (const Symbol* s : dead) {
    if (Submap* m = FindSubmap(s->submap)) submaps.insert(m);
    if (Object* o = FindObject(s->object)) objects.insert(o);
  }
  for (Object* o : objects) EraseIf(o->symbols, isDead);
  for (Submap* m : submaps) {
    EraseIf(m->symbols, isDead);
    // A symbol placed after a removed one now follows the nearest one
    // before it that stays.
    for (Symbol* s : m->symbols) s->pred = LivePredecessor(*s, dead);
  }
  std::vector<QXwSymbolId> ids;
  ids.reserve(dead.size());
  for (const Symbol* s : dead) {
    ids.push_back(s->id);
    if (s->variety == QXW_SYMBOL_CONNECTION) {
      for (QXwSymbolId endpoint : {s->endpoint1, s->endpoint2}) {
        auto it = attached_.find(endpoint);
        if (it == attached_.end()) continue;
        EraseIf(it->second, [s](QXwSymbolId c) { return c == s->id; });
        if (it->second.empty()) attached_.erase(it);
      }
    }
  }
  for (QXwSymbolId id : ids) {
    attached_.erase(id);
    symbols_.erase(id);
  }
}

std::vector<const Symbol*> Map::SymbolsToRemove(const std::vector<QXwSymbolId>& ids) {
  std::vector<const Symbol*> out;
  std::unordered_set<const Symbol*> seen;
  for (QXwSymbolId id : ids) {
    if (Symbol* s = FindSymbol(id); s != nullptr && seen.insert(s).second) out.push_back(s);
  }
  // Connections attached to a removed symbol go with it, after the others.
  for (size_t i = 0; i < out.size(); ++i) {
    auto attached = attached_.find(out[i]->id);
    if (attached == attached_.end()) continue;
    for (QXwSymbolId connectionId : attached->second) {
      Symbol* c = FindSymbol(connectionId);
      if (c != nullptr && seen.insert(c).second) out.push_back(c);
    }
  }
  return out;
}

void Map::CollectSubmaps(const std::vector<QXwSubmapId>& ids, Removal* removal,
                         std::vector<QXwSymbolId>* symbolIds) {
  std::unordered_set<const Submap*> seen(removal->submaps.begin(), removal->submaps.end());
  for (QXwSubmapId id : ids) {
    const Submap* m = FindSubmap(id);
    if (m == nullptr || !seen.insert(m).second) continue;
    removal->submaps.push_back(m);
    for (const Symbol* s : m->symbols) symbolIds->push_back(s->id);
  }
}

Map::Removal Map::SubmapsRemoval(const std::vector<QXwSubmapId>& ids) {
  Removal removal;
  std::vector<QXwSymbolId> symbolIds;
  CollectSubmaps(ids, &removal, &symbolIds);
  removal.symbols = SymbolsToRemove(symbolIds);
  return removal;
}

Map::Removal Map::ObjectsRemoval(const std::vector<QXwObjectId>& ids) {
  Removal removal;
  std::unordered_set<const Object*> seen;
  std::vector<QXwSymbolId> symbolIds;
  std::vector<QXwSubmapId> children;
  for (QXwObjectId id : ids) {
    const Object* o = FindObject(id);
    if (o == nullptr || !seen.insert(o).second) continue;
    removal.objects.push_back(o);
    for (const Symbol* s : o->symbols) symbolIds.push_back(s->id);
    if (o->childSubmap != 0) children.push_back(o->childSubmap);
  }
  CollectSubmaps(children, &removal, &symbolIds);
  removal.symbols = SymbolsToRemove(symbolIds);
  return removal;
}

Map::Removal Map::CascadeRemoval(const std::vector<QXwSymbolId>& symbols,
                                 const std::vector<QXwSubmapId>& submaps,
                                 const std::vector<QXwObjectId>& objects) {
  Removal removal;
  std::unordered_set<const Symbol*> deadSymbols;
  std::unordered_set<const Submap*> deadSubmaps;
  std::unordered_set<const Object*> deadObjects;
  std::unordered_map<const Object*, size_t> symbolsGone;
  std::vector<QXwSymbolId> symbolQueue(symbols);
  std::vector<QXwSubmapId> submapQueue(submaps);
  std::vector<QXwObjectId> objectQueue(objects);
  while (!symbolQueue.empty() || !submapQueue.empty() || !objectQueue.empty()) {
    for (size_t i = 0; i < objectQueue.size(); ++i) {
      const Object* o = FindObject(objectQueue[i]);
      if (o == nullptr || !deadObjects.insert(o).second) continue;
      removal.objects.push_back(o);
      for (const Symbol* s : o->symbols) symbolQueue.push_back(s->id);
      if (o->childSubmap != 0) submapQueue.push_back(o->childSubmap);
    }
    objectQueue.clear();
    for (size_t i = 0; i < submapQueue.size(); ++i) {
      const Submap* m = FindSubmap(submapQueue[i]);
      if (m == nullptr || !deadSubmaps.insert(m).second) continue;
      removal.submaps.push_back(m);
      for (const Symbol* s : m->symbols) symbolQueue.push_back(s->id);
    }
    submapQueue.clear();
    for (size_t i = 0; i < symbolQueue.size(); ++i) {
      const Symbol* s = FindSymbol(symbolQueue[i]);
      if (s == nullptr || !deadSymbols.insert(s).second) continue;
      removal.symbols.push_back(s);
      if (auto attached = attached_.find(s->id); attached != attached_.end()) {
        for (QXwSymbolId c : attached->second) symbolQueue.push_back(c);
      }
      const Object* o = FindObject(s->object);
      if (o != nullptr && ++symbolsGone[o] == o->symbols.size()) objectQueue.push_back(o->id);
    }
    symbolQueue.clear();
  }
  return removal;
}

void Map::Remove(const Removal& removal) {
  UnlinkSymbols(std::unordered_set<const Symbol*>(removal.symbols.begin(), removal.symbols.end()));
  // Erasing one entry leaves the pointers to the others valid.
  for (const Submap* m : removal.submaps) {
    const QXwSubmapId id = m->id;
    if (Object* parent = FindObject(m->parentObject); parent != nullptr) {
      if (parent->childSubmap == id) parent->childSubmap = 0;
    }
    if (rootSubmap == id) rootSubmap = 0;
    submaps_.erase(id);
  }
  if (removal.objects.empty()) return;
  std::unordered_set<const Object*> dead(removal.objects.begin(), removal.objects.end());
  EraseIf(objectOrder_, [&](const Object* o) { return dead.count(o) != 0; });
  for (const Object* o : removal.objects) {
    for (const FieldValue& v : o->fields) UnindexValue(*o, v);
    objects_.erase(o->id);
  }
}

std::string RenderScalar(const FieldDef& field, const Scalar& value) {
  switch (field.type) {
    case QXW_FIELD_INTEGER:
      return std::to_string(value.num);
    case QXW_FIELD_BOOLEAN:
      return value.num == 1 ? "TRUE" : "FALSE";
    case QXW_FIELD_ENUMERATION:
      if (value.num >= 0 && static_cast<size_t>(value.num) < field.enumNames.size()) {
        return field.enumNames[value.num];
      }
      return std::to_string(value.num);
    default:
      return value.text;
  }
}

}  // namespace qxwemu
