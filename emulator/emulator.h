// The emulator's process-wide state and the plumbing shared by every
// platform function: call counters, injected failures, the last error, the
// session with its event queue, and the control channel.
//
// One mutex guards all of it. Platform functions hold it for their whole
// body; handlers are always called with it released, since they call
// platform functions themselves.
#ifndef SKIFF_EMULATOR_EMULATOR_H_
#define SKIFF_EMULATOR_EMULATOR_H_

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "emulator/model.h"
#include "emulator/surprises.h"
#include "platform/qxw.h"

namespace qxwemu {

// Every counted platform function, in the order of the counters reply.
#define QXWEMU_FUNCTIONS(X)        \
  X(QXwInit)                       \
  X(QXwGetMapInfo)                 \
  X(QXwFreeMapInfo)                \
  X(QXwProcessEvent)               \
  X(QXwDone)                       \
  X(QXwAckMapClose)                \
  X(QXwAddCallback)                \
  X(QXwAddInput)                   \
  X(QXwRemoveInput)                \
  X(QXwError)                      \
  X(QXwErrorMsg)                   \
  X(QXwListSymbols)                \
  X(QXwGetSymbolsByObject)         \
  X(QXwFreeSymbolList)             \
  X(QXwGetSubmapInfo)              \
  X(QXwFreeSubmapInfo)             \
  X(QXwGetObjectInfo)              \
  X(QXwFreeObjectInfo)             \
  X(QXwDeleteSymbols)              \
  X(QXwSetSymbolsVisibility)       \
  X(QXwSetObjectAckState)          \
  X(_QXwManageObjects)             \
  X(_QXwUnmanageObjects)           \
  X(QXwDbFieldNameToFieldId)       \
  X(QXwDbSelectionNameToObjectId)  \
  X(QXwDbObjectIdToSelectionName)  \
  X(QXwDbHostnameToObjectId)       \
  X(QXwDbGetFieldValues)           \
  X(QXwDbGetCapabilityFieldValues) \
  X(QXwDbFreeFieldBindList)        \
  X(QXwDbGetFieldValuesByObjects)  \
  X(QXwDbFreeObjectFieldList)      \
  X(QXwDbGetFieldIntegerValue)     \
  X(QXwDbSetFieldIntegerValue)     \
  X(QXwDbListObjectsByFieldValue)  \
  X(QXwDbListObjectsByFieldValues) \
  X(QXwDbFreeObjectIdList)         \
  X(QXwDbListFields)               \
  X(QXwDbFreeFieldList)            \
  X(QXwDbGetFieldInfo)             \
  X(QXwDbFreeFieldInfo)            \
  X(QXwDbGetEnumConstants)         \
  X(QXwDbFreeEnumConstants)        \
  X(skCollectionOpen)              \
  X(skCollectionEvaluate)          \
  X(skCollectionDone)

enum Fn : int {
#define QXWEMU_ENUM(name) k_##name,
  QXWEMU_FUNCTIONS(QXWEMU_ENUM)
#undef QXWEMU_ENUM
      kFnCount
};

const char* FnName(Fn fn);
// The function named `name`, or nullopt.
std::optional<Fn> FnByName(std::string_view name);
// Whether `fail` may target the function (free functions and the error
// accessors cannot fail).
bool FnCanFail(Fn fn);
// Whether the function takes an id argument (failures.cpp).
bool FnTakesIds(Fn fn);

struct Registration {
  int code;
  QXwFieldBindList* filter;  // owned by the registrant
  QXwCallbackProc proc;
  void* userData;
};

struct Input {
  QXwInputId id;
  int fd;
  QXwInputProc proc;
  void* userData;
};

// A queued event. Its records are built when it is queued, so that they
// show the map as it was at that moment, and are released after delivery.
struct Event {
  int code = 0;
  QXwMapInfo* map = nullptr;  // map open and close: the map concerned
  QXwSymbolList* symbols = nullptr;
  QXwSubmapList* submaps = nullptr;
  QXwObjectList* objects = nullptr;
  int flag = 0;  // normalEnd, isNormalized
  time_t time = 0;
};
void ReleaseEvent(Event& event);

// A control command waiting for the event loop, and where its reply goes.
struct PendingCommand {
  std::string line;
  int connection = -1;  // control socket, or -1 for an in-process caller
  struct Waiter* waiter = nullptr;
  bool tooLong = false;  // a line over kMaxControlLine: refused, `line` is empty
};

struct Waiter {
  std::condition_variable done;
  bool ready = false;
  std::string reply;
};

// A failure injected into a platform function (failures.cpp).
struct Failure {
  bool active = false;
  int code = 1;
  int64_t remaining = -1;  // calls still to fail; -1: every call
  int64_t passes = 0;      // calls that still succeed before the failures begin
  bool forId = false;      // only calls that have `id` among their id arguments
  uint32_t id = 0;
};

// The id arguments of a call (object, submap, symbol and field ids, alone,
// in an id list or in field bindings), which `fail FUNCTION for ID` tests.
struct IdArgs {
  std::initializer_list<uint32_t> ids = {};
  const uint32_t* list = nullptr;
  int count = 0;
  const QXwFieldBinding* bindings = nullptr;
  int bindingCount = 0;

  bool Has(uint32_t id) const;
};
// The id arguments of a call with an id list (and maybe more ids); a list
// that is not valid has none.
IdArgs ListArgs(const QXwSymbolIdList* list, std::initializer_list<uint32_t> ids = {});
IdArgs ListArgs(const QXwObjectIdList* list, std::initializer_list<uint32_t> ids = {});

struct ControlConnection {
  int fd = -1;
  std::string buffer;              // received text not yet taken as lines
  size_t scanned = 0;              // buffer[0, scanned) holds no line end
  bool discarding = false;         // dropping a line over the bound up to its line end
  std::deque<std::string> output;  // replies not yet sent, each with its line end
  size_t frontSent = 0;            // bytes of output.front() already sent
  size_t unsent = 0;               // bytes of output not yet sent
  bool eof = false;                // the peer has finished sending
};

struct Session {
  bool open = false;   // between QXwInit and QXwDone
  bool ended = false;  // the end of the session has been delivered
  std::unique_ptr<Map> map;
  bool mapOpen = false;
  std::vector<Registration> registrations;
  std::vector<Input> inputs;
  QXwInputId nextInputId = 1;
  std::deque<Event> events;
  int collectionOpens = 0;
  Surprises surprises;
  // control channel
  int controlListen = -1;
  std::string controlPath;
  std::vector<ControlConnection> connections;
};

struct Emulator {
  std::mutex mu;
  std::atomic<uint64_t> counters[kFnCount] = {};
  Failure failures[kFnCount];
  Session session;
  std::deque<PendingCommand> pending;
  // Notified whenever a command joins `pending`.
  std::condition_variable commandQueued;
  // The thread inside QXwProcessEvent, if any: in-process commands from
  // other threads are handed to it.
  bool loopInside = false;
  std::thread::id loopThread;
  int wakeRead = -1;
  int wakeWrite = -1;
};

Emulator& Emu();

// The first statement of every counted platform function: counts the call
// and takes the emulator's lock.
class Call {
 public:
  explicit Call(Fn fn);
  // True when an injected failure applies to this call, whose id arguments
  // are `args`; the error is then set (failures.cpp).
  bool Failing(const IdArgs& args = {});
  std::unique_lock<std::mutex>& lock() { return lock_; }

 private:
  Fn fn_;
  std::unique_lock<std::mutex> lock_;
};

// Counts a call that needs no lock (the free functions).
void CountCall(Fn fn);

// Sets this thread's last error. A `detail` replaces the standard text of
// the code in QXwErrorMsg until the next error.
void SetError(int code, std::string detail = {});
int LastErrorCode();
// The text of an error code.
std::string ErrorText(int code);

// Session helpers, called with the lock held.
// The open map, or null after setting the error (no session, no map).
Map* OpenMap(const QXwMapInfo* mapArg, bool needArg = true);
// The map of the session whatever its open state (the object database), or
// null after setting the error.
Map* Database();
// The entity with this id, or null after setting the error
// ("no such object: 42" and so on).
Object* ObjectOrError(Map& map, QXwObjectId id);
Submap* SubmapOrError(Map& map, QXwSubmapId id);
Symbol* SymbolOrError(Map& map, QXwSymbolId id);
void Queue(Event event);
// Reports a removal as the platform reports a deletion, then applies it: one
// symbols-deleted event (14), then one submaps-deleted event (16), then one
// objects-deleted event (15), each with all its items as they were and only
// when it has any. So no handler hears of a submap or an object gone before
// it has heard of the symbols on it or of it, nor of a parent object gone
// before its child submap.
void QueueAndRemove(Map& map, const Map::Removal& removal);
// Deletes the symbols `ids` (those that exist) with what goes with them, and
// reports it: the connections attached to them, and where deletions cascade
// whatever follows (Map::CascadeRemoval).
void DeleteSymbols(Map& map, const std::vector<QXwSymbolId>& ids);
// Ends the session: releases the map, queued events and registrations,
// closes the control channel and answers commands still waiting.
void CloseSession();

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_EMULATOR_H_
