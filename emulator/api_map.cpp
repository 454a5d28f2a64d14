// Map contents: symbols, submaps, objects and their states.
#include <algorithm>
#include <unordered_set>

#include "emulator/arena.h"
#include "emulator/emulator.h"
#include "emulator/list_order.h"
#include "emulator/records.h"

using namespace qxwemu;

namespace {

// The symbols named by a list. False, with the error set, when the list is
// not valid or names a symbol that does not exist; `out` then holds the
// symbols that exist when id lists are applied partially, else none.
bool ResolveSymbols(Map& map, const QXwSymbolIdList* ids, std::vector<Symbol*>* out) {
  if (ids == nullptr || ids->count < 0 || (ids->count > 0 && ids->symbol_ids == nullptr)) {
    SetError(QXW_ERR_BAD_ARGUMENT, "invalid symbol id list");
    return false;
  }
  bool whole = true;
  for (int i = 0; i < ids->count; ++i) {
    Symbol* s = map.FindSymbol(ids->symbol_ids[i]);
    if (s != nullptr) {
      out->push_back(s);
    } else if (whole) {
      whole = false;
      SymbolOrError(map, ids->symbol_ids[i]);
    }
  }
  if (!whole && !PartialIdLists()) out->clear();
  return whole;
}

// As ResolveSymbols, for objects.
bool ResolveObjects(Map& map, const QXwObjectIdList* ids, std::vector<Object*>* out) {
  if (ids == nullptr || ids->count < 0 || (ids->count > 0 && ids->object_ids == nullptr)) {
    SetError(QXW_ERR_BAD_ARGUMENT, "invalid object id list");
    return false;
  }
  bool whole = true;
  for (int i = 0; i < ids->count; ++i) {
    Object* o = map.FindObject(ids->object_ids[i]);
    if (o != nullptr) {
      out->push_back(o);
    } else if (whole) {
      whole = false;
      ObjectOrError(map, ids->object_ids[i]);
    }
  }
  if (!whole && !PartialIdLists()) out->clear();
  return whole;
}

bool Writable(const Map& map) {
  if (map.permissions == QXW_MAP_READ_ONLY) {
    SetError(QXW_ERR_READ_ONLY);
    return false;
  }
  return true;
}

void QueueSymbolEvent(int code, Map& map, const std::vector<const Symbol*>& symbols) {
  if (symbols.empty()) return;
  Event e;
  e.code = code;
  e.symbols = BuildSymbolList(map, symbols);
  Queue(e);
}

// Sets the managed state of objects and the status of their symbols; one
// event 25 reports the symbols whose status changed.
int SetManaged(Call& call, QXwMapInfo* mapArg, QXwObjectIdList* ids, bool managed) {
  if (call.Failing(ListArgs(ids))) return -1;
  Map* map = OpenMap(mapArg);
  if (map == nullptr) return -1;
  std::vector<Object*> objects;
  const bool whole = ResolveObjects(*map, ids, &objects);
  const QXwStatusType status = managed ? 0 : 1;
  std::vector<const Symbol*> changed;
  std::unordered_set<const Symbol*> seen;
  for (Object* o : objects) {
    o->managed = managed;
    for (Symbol* s : o->symbols) {
      if (s->status != status) {
        s->status = status;
        if (seen.insert(s).second) changed.push_back(s);
      }
    }
  }
  QueueSymbolEvent(QXW_EVENT_SYMBOLS_STATUS, *map, changed);
  return whole ? 0 : -1;
}

}  // namespace

extern "C" {

QXwSymbolList* QXwListSymbols(QXwMapInfo* mapArg, QXwSubmapId submapId, QXwPlaneType planes,
                              const char* appName) {
  Call call(k_QXwListSymbols);
  if (call.Failing({{submapId}})) return nullptr;
  Map* map = OpenMap(mapArg);
  if (map == nullptr) return nullptr;
  const Submap* submap = SubmapOrError(*map, submapId);
  if (submap == nullptr) return EmptyForNothing() ? BuildSymbolList(*map, {}) : nullptr;
  const bool byApp = appName != nullptr && *appName != '\0';
  std::vector<const Symbol*> chosen;
  chosen.reserve(submap->symbols.size());
  for (const Symbol* s : ServedSymbols(*submap)) {
    if ((s->plane & planes) == 0) continue;
    if (byApp && std::find(s->apps->begin(), s->apps->end(), appName) == s->apps->end()) continue;
    chosen.push_back(s);
  }
  if (chosen.empty() && NoneForNothing()) return nullptr;
  return BuildSymbolList(*map, chosen);
}

QXwSymbolList* QXwGetSymbolsByObject(QXwMapInfo* mapArg, QXwObjectId objectId) {
  Call call(k_QXwGetSymbolsByObject);
  if (call.Failing({{objectId}})) return nullptr;
  Map* map = OpenMap(mapArg);
  if (map == nullptr) return nullptr;
  const Object* object = ObjectOrError(*map, objectId);
  if (object == nullptr) return EmptyForNothing() ? BuildSymbolList(*map, {}) : nullptr;
  if (object->symbols.empty() && NoneForNothing()) return nullptr;
  return BuildSymbolList(*map, ServedSymbols(*object));
}

void QXwFreeSymbolList(QXwSymbolList* list) {
  CountCall(k_QXwFreeSymbolList);
  Arena::Release(list);
}

QXwSubmapInfo* QXwGetSubmapInfo(QXwMapInfo* mapArg, QXwSubmapId submapId) {
  Call call(k_QXwGetSubmapInfo);
  if (call.Failing({{submapId}})) return nullptr;
  Map* map = OpenMap(mapArg);
  const Submap* submap = map == nullptr ? nullptr : SubmapOrError(*map, submapId);
  return submap == nullptr ? nullptr : BuildSubmapInfo(*submap);
}

void QXwFreeSubmapInfo(QXwSubmapInfo* submap) {
  CountCall(k_QXwFreeSubmapInfo);
  Arena::Release(submap);
}

QXwObjectInfo* QXwGetObjectInfo(QXwMapInfo* mapArg, QXwObjectId objectId) {
  Call call(k_QXwGetObjectInfo);
  if (call.Failing({{objectId}})) return nullptr;
  Map* map = OpenMap(mapArg);
  const Object* object = map == nullptr ? nullptr : ObjectOrError(*map, objectId);
  return object == nullptr ? nullptr : BuildObjectInfo(*object);
}

void QXwFreeObjectInfo(QXwObjectInfo* object) {
  CountCall(k_QXwFreeObjectInfo);
  Arena::Release(object);
}

int QXwDeleteSymbols(QXwMapInfo* mapArg, QXwSymbolIdList* ids) {
  Call call(k_QXwDeleteSymbols);
  if (call.Failing(ListArgs(ids))) return -1;
  Map* map = OpenMap(mapArg);
  if (map == nullptr || !Writable(*map)) return -1;
  std::vector<Symbol*> symbols;
  const bool whole = ResolveSymbols(*map, ids, &symbols);
  std::vector<QXwSymbolId> named;
  for (const Symbol* s : symbols) named.push_back(s->id);
  DeleteSymbols(*map, named);
  return whole ? 0 : -1;
}

int QXwSetSymbolsVisibility(QXwMapInfo* mapArg, QXwSymbolIdList* ids, QXwBoolean hidden) {
  Call call(k_QXwSetSymbolsVisibility);
  if (call.Failing(ListArgs(ids))) return -1;
  Map* map = OpenMap(mapArg);
  if (map == nullptr || !Writable(*map)) return -1;
  std::vector<Symbol*> symbols;
  const bool whole = ResolveSymbols(*map, ids, &symbols);
  const bool hide = hidden != 0;
  std::vector<const Symbol*> changed;
  for (Symbol* s : symbols) {
    if (s->hidden != hide) {
      s->hidden = hide;
      changed.push_back(s);
    }
  }
  QueueSymbolEvent(hide ? QXW_EVENT_SYMBOLS_HIDDEN : QXW_EVENT_SYMBOLS_UNHIDDEN, *map, changed);
  return whole ? 0 : -1;
}

int QXwSetObjectAckState(QXwMapInfo* mapArg, QXwObjectIdList* ids, QXwBoolean acknowledged) {
  Call call(k_QXwSetObjectAckState);
  if (call.Failing(ListArgs(ids))) return -1;
  Map* map = OpenMap(mapArg);
  if (map == nullptr) return -1;
  std::vector<Object*> objects;
  const bool whole = ResolveObjects(*map, ids, &objects);
  for (Object* o : objects) o->acknowledged = acknowledged != 0;
  return whole ? 0 : -1;
}

int _QXwManageObjects(QXwMapInfo* mapArg, QXwObjectIdList* ids) {
  Call call(k__QXwManageObjects);
  return SetManaged(call, mapArg, ids, true);
}

int _QXwUnmanageObjects(QXwMapInfo* mapArg, QXwObjectIdList* ids) {
  Call call(k__QXwUnmanageObjects);
  return SetManaged(call, mapArg, ids, false);
}

}  // extern "C"
