#include "emulator/emulator.h"

#include <unistd.h>

#include "emulator/arena.h"
#include "emulator/control.h"
#include "emulator/records.h"

namespace qxwemu {

namespace {

thread_local int tlErrorCode = 0;
thread_local std::string tlErrorDetail;

const char* const kFnNames[] = {
#define QXWEMU_NAME(name) #name,
    QXWEMU_FUNCTIONS(QXWEMU_NAME)
#undef QXWEMU_NAME
};

}  // namespace

Emulator& Emu() {
  static Emulator* emulator = new Emulator();  // lives as long as the process
  return *emulator;
}

const char* FnName(Fn fn) { return kFnNames[fn]; }

std::optional<Fn> FnByName(std::string_view name) {
  for (int i = 0; i < kFnCount; ++i) {
    if (name == kFnNames[i]) return static_cast<Fn>(i);
  }
  return std::nullopt;
}

bool FnCanFail(Fn fn) {
  switch (fn) {
    case k_QXwFreeMapInfo:
    case k_QXwFreeSymbolList:
    case k_QXwFreeSubmapInfo:
    case k_QXwFreeObjectInfo:
    case k_QXwDbFreeFieldBindList:
    case k_QXwDbFreeObjectFieldList:
    case k_QXwDbFreeObjectIdList:
    case k_QXwDbFreeFieldList:
    case k_QXwDbFreeFieldInfo:
    case k_QXwDbFreeEnumConstants:
    case k_QXwError:
    case k_QXwErrorMsg:
    case k_skCollectionDone:
      return false;
    default:
      return true;
  }
}

Call::Call(Fn fn) : fn_(fn), lock_(Emu().mu) {
  Emu().counters[fn].fetch_add(1, std::memory_order_relaxed);
}

void CountCall(Fn fn) { Emu().counters[fn].fetch_add(1, std::memory_order_relaxed); }

void SetError(int code, std::string detail) {
  tlErrorCode = code;
  tlErrorDetail = std::move(detail);
}

int LastErrorCode() { return tlErrorCode; }

std::string ErrorText(int code) {
  if (code == tlErrorCode && !tlErrorDetail.empty()) return tlErrorDetail;
  switch (code) {
    case QXW_OK:
      return "no error";
    case QXW_ERR_FAILED:
      return "the operation failed";
    case QXW_ERR_NO_MAP_INFO:
      return "no map information is available";
    case QXW_ERR_NO_SESSION:
      return "no session is open";
    case QXW_ERR_NO_MAP:
      return "no map is open";
    case QXW_ERR_BAD_ARGUMENT:
      return "invalid argument";
    case QXW_ERR_NO_SUCH_SUBMAP:
      return "no such submap";
    case QXW_ERR_NO_SUCH_SYMBOL:
      return "no such symbol";
    case QXW_ERR_NO_SUCH_OBJECT:
      return "no such object";
    case QXW_ERR_NO_SUCH_FIELD:
      return "no such field";
    case QXW_ERR_NO_VALUE:
      return "the object has no value for the field";
    case QXW_ERR_WRONG_TYPE:
      return "the field has another type";
    case QXW_ERR_READ_ONLY:
      return "the map is open read-only";
    case QXW_ERR_NOT_FOUND:
      return "nothing matches";
    case QXW_ERR_SESSION_OPEN:
      return "a session is already open";
    case QXW_ERR_BAD_EXPRESSION:
      return "invalid collection expression";
    case QXW_ERR_NOT_OPEN:
      return "the collection service is not open";
  }
  return "unknown error " + std::to_string(code);
}

Map* Database() {
  Session& s = Emu().session;
  if (!s.open) {
    SetError(QXW_ERR_NO_SESSION);
    return nullptr;
  }
  if (s.map == nullptr) {
    SetError(QXW_ERR_NO_MAP);
    return nullptr;
  }
  return s.map.get();
}

Map* OpenMap(const QXwMapInfo* mapArg, bool needArg) {
  Session& s = Emu().session;
  if (!s.open) {
    SetError(QXW_ERR_NO_SESSION);
    return nullptr;
  }
  if (s.map == nullptr || !s.mapOpen) {
    SetError(QXW_ERR_NO_MAP);
    return nullptr;
  }
  if (needArg && mapArg == nullptr) {
    SetError(QXW_ERR_BAD_ARGUMENT, "no map information was given");
    return nullptr;
  }
  return s.map.get();
}

Object* ObjectOrError(Map& map, QXwObjectId id) {
  Object* o = map.FindObject(id);
  if (o == nullptr) SetError(QXW_ERR_NO_SUCH_OBJECT, "no such object: " + std::to_string(id));
  return o;
}

Submap* SubmapOrError(Map& map, QXwSubmapId id) {
  Submap* s = map.FindSubmap(id);
  if (s == nullptr) SetError(QXW_ERR_NO_SUCH_SUBMAP, "no such submap: " + std::to_string(id));
  return s;
}

Symbol* SymbolOrError(Map& map, QXwSymbolId id) {
  Symbol* s = map.FindSymbol(id);
  if (s == nullptr) SetError(QXW_ERR_NO_SUCH_SYMBOL, "no such symbol: " + std::to_string(id));
  return s;
}

void ReleaseEvent(Event& event) {
  Arena::Release(event.map);
  Arena::Release(event.symbols);
  Arena::Release(event.submaps);
  Arena::Release(event.objects);
  event = Event();
}

void Queue(Event event) {
  Emulator& emu = Emu();
  emu.session.events.push_back(event);
  if (emu.loopInside && emu.loopThread != std::this_thread::get_id() && emu.wakeWrite >= 0) {
    char byte = 1;
    [[maybe_unused]] ssize_t n = write(emu.wakeWrite, &byte, 1);
  }
}

void QueueAndRemove(Map& map, const Map::Removal& removal) {
  if (!removal.symbols.empty()) {
    Event e;
    e.code = QXW_EVENT_SYMBOLS_DELETED;
    e.symbols = BuildSymbolList(map, removal.symbols);
    Queue(e);
  }
  if (!removal.submaps.empty()) {
    Event e;
    e.code = QXW_EVENT_SUBMAPS_DELETED;
    e.submaps = BuildSubmapList(removal.submaps);
    Queue(e);
  }
  if (!removal.objects.empty()) {
    Event e;
    e.code = QXW_EVENT_OBJECTS_DELETED;
    e.objects = BuildObjectList(map, removal.objects);
    Queue(e);
  }
  map.Remove(removal);
}

void DeleteSymbols(Map& map, const std::vector<QXwSymbolId>& ids) {
  Map::Removal removal;
  if (Emu().session.surprises.cascade) {
    removal = map.CascadeRemoval(ids, {}, {});
  } else {
    removal.symbols = map.SymbolsToRemove(ids);
  }
  QueueAndRemove(map, removal);
}

void CloseSession() {
  Emulator& emu = Emu();
  Session& s = emu.session;
  for (Event& e : s.events) ReleaseEvent(e);
  CloseControl(s);
  AnswerPendingWithError("the session has ended");
  s = Session();
}

}  // namespace qxwemu
