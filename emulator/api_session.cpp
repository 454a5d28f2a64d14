// Session and events: QXwInit, the event loop and registrations.
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "emulator/arena.h"
#include "emulator/control.h"
#include "emulator/control_syntax.h"
#include "emulator/emulator.h"
#include "emulator/erase.h"
#include "emulator/loader.h"
#include "emulator/records.h"
#include "platform/qxtrace.h"

using namespace qxwemu;

namespace {

bool IsEventCode(int code) {
  switch (code) {
    case QXW_EVENT_END_SESSION:
    case QXW_EVENT_MAP_OPEN:
    case QXW_EVENT_MAP_CLOSE:
    case QXW_EVENT_SYMBOLS_DELETED:
    case QXW_EVENT_OBJECTS_DELETED:
    case QXW_EVENT_SUBMAPS_DELETED:
    case QXW_EVENT_SYMBOLS_CREATED:
    case QXW_EVENT_OBJECTS_CREATED:
    case QXW_EVENT_SUBMAPS_CREATED:
    case QXW_EVENT_SYMBOL_MOVED:
    case QXW_EVENT_SYMBOLS_HIDDEN:
    case QXW_EVENT_SYMBOLS_UNHIDDEN:
    case QXW_EVENT_SYMBOLS_STATUS:
    case QXW_EVENT_SYMBOL_NORMALIZE:
    case QXW_EVENT_SUBMAP_AUTOLAYOUT:
      return true;
  }
  return false;
}

void EnsureWakePipe(Emulator& emu) {
  if (emu.wakeRead >= 0) return;
  int fds[2];
  if (pipe2(fds, O_NONBLOCK | O_CLOEXEC) == 0) {
    emu.wakeRead = fds[0];
    emu.wakeWrite = fds[1];
  }
}

// Whether an object (with its field values) passes a registration filter:
// every binding of the filter must be matched by a value of the object.
bool PassesFilter(const QXwFieldBindList* filter, const QXwObjectInfo& object) {
  if (filter == nullptr) return true;
  const QXwFieldBindList* values = object.field_values;
  for (int i = 0; i < filter->count; ++i) {
    const QXwFieldBinding& want = filter->fields[i];
    if (want.field_val == nullptr) return false;
    bool matched = false;
    for (int k = 0; values != nullptr && k < values->count && !matched; ++k) {
      const QXwFieldBinding& have = values->fields[k];
      if (have.field_id != want.field_id || have.field_val == nullptr || have.field_val->is_list) {
        continue;
      }
      if (have.field_val->field_type == QXW_FIELD_STRING) {
        const char* a = have.field_val->un.string_val;
        const char* b = want.field_val->un.string_val;
        matched = a != nullptr && b != nullptr && std::strcmp(a, b) == 0;
      } else {
        matched = have.field_val->un.int_val == want.field_val->un.int_val;
      }
    }
    if (!matched) return false;
  }
  return true;
}

// Calls one handler with the event's data in the handler's form.
void CallHandler(const Registration& r, Event& e, QXwMapInfo* current) {
  void* ud = r.userData;
  switch (e.code) {
    case QXW_EVENT_END_SESSION:
      reinterpret_cast<QXwEndSessionProc>(r.proc)(ud, e.code, e.flag);
      return;
    case QXW_EVENT_MAP_OPEN:
      reinterpret_cast<QXwMapOpenProc>(r.proc)(ud, e.code, e.map, nullptr);
      return;
    case QXW_EVENT_MAP_CLOSE:
      reinterpret_cast<QXwMapCloseProc>(r.proc)(ud, e.code, e.map, e.time);
      return;
    case QXW_EVENT_SYMBOL_MOVED:
      reinterpret_cast<QXwSymbolProc>(r.proc)(ud, e.code, current, &e.symbols->symbols[0]);
      return;
    case QXW_EVENT_SYMBOL_NORMALIZE:
      reinterpret_cast<QXwSymbolNormalizeProc>(r.proc)(ud, e.code, current, &e.symbols->symbols[0],
                                                       e.flag);
      return;
    case QXW_EVENT_SUBMAPS_CREATED:
    case QXW_EVENT_SUBMAPS_DELETED:
      reinterpret_cast<QXwSubmapListProc>(r.proc)(ud, e.code, current, e.submaps);
      return;
    case QXW_EVENT_SUBMAP_AUTOLAYOUT:
      reinterpret_cast<QXwSubmapProc>(r.proc)(ud, e.code, current, &e.submaps->submaps[0]);
      return;
    case QXW_EVENT_OBJECTS_CREATED:
    case QXW_EVENT_OBJECTS_DELETED: {
      // Only the objects that pass this registration's filter reach it.
      std::vector<QXwObjectInfo> passing;
      for (int i = 0; i < e.objects->count; ++i) {
        if (PassesFilter(r.filter, e.objects->objects[i])) passing.push_back(e.objects->objects[i]);
      }
      if (passing.empty()) return;
      QXwObjectList list{static_cast<int>(passing.size()), passing.data()};
      reinterpret_cast<QXwObjectListProc>(r.proc)(ud, e.code, current, &list);
      return;
    }
    default:
      reinterpret_cast<QXwSymbolListProc>(r.proc)(ud, e.code, current, e.symbols);
  }
}

// Delivers the oldest event; called with the lock held, which is released
// while handlers run.
void DeliverOne(std::unique_lock<std::mutex>& lock) {
  Emulator& emu = Emu();
  Session& s = emu.session;
  Event e = s.events.front();
  s.events.pop_front();
  std::vector<Registration> handlers;
  for (const Registration& r : s.registrations) {
    if (r.code == e.code) handlers.push_back(r);
  }
  QXwMapInfo* current = nullptr;
  if (e.code != QXW_EVENT_MAP_OPEN && e.code != QXW_EVENT_MAP_CLOSE && s.map != nullptr &&
      s.mapOpen) {
    current = BuildMapInfo(*s.map);
  }
  lock.unlock();
  for (const Registration& r : handlers) CallHandler(r, e, current);
  lock.lock();
  Arena::Release(current);
  const bool endOfSession = e.code == QXW_EVENT_END_SESSION;
  ReleaseEvent(e);
  if (endOfSession && s.open) s.ended = true;
}

// Marks the calling thread as the one inside the event loop.
class LoopScope {
 public:
  explicit LoopScope(Emulator& emu) : emu_(emu) {
    emu_.loopInside = true;
    emu_.loopThread = std::this_thread::get_id();
  }
  ~LoopScope() { emu_.loopInside = false; }  // the lock is held again by then

 private:
  Emulator& emu_;
};

}  // namespace

extern "C" {

int QXwInit(void) {
  Call call(k_QXwInit);
  if (call.Failing()) return -1;
  Emulator& emu = Emu();
  Session& s = emu.session;
  if (s.open) {
    SetError(QXW_ERR_SESSION_OPEN);
    return -1;
  }
  _QXtraceActive();  // the trace facility reads its setting now at the latest
  const char* initError = std::getenv("QXW_INIT_ERROR");
  int forced = initError != nullptr ? std::atoi(initError) : 0;
  if (forced != 0 && forced != QXW_ERR_NO_MAP_INFO) {
    SetError(forced);
    return -1;
  }
  Surprises surprises;
  try {
    surprises = SurprisesFromEnvironment();
  } catch (const Refusal& r) {
    SetError(QXW_ERR_FAILED, r.message);
    return -1;
  }
  std::unique_ptr<Map> map;
  if (forced == 0) {
    std::string error;
    const char* path = std::getenv("QXW_MAP");
    map = path != nullptr && *path != '\0' ? LoadMapFile(path, &error) : LoadDefaultMap(&error);
    if (map == nullptr) {
      SetError(QXW_ERR_FAILED, error);
      return -1;
    }
  }
  const char* control = std::getenv("QXW_CONTROL");
  if (control != nullptr && *control != '\0') {
    std::string error;
    if (!OpenControl(s, control, &error)) {
      SetError(QXW_ERR_FAILED, error);
      return -1;
    }
  }
  EnsureWakePipe(emu);
  s.open = true;
  s.ended = false;
  s.mapOpen = map != nullptr;
  s.map = std::move(map);
  s.surprises = surprises;
  if (forced == QXW_ERR_NO_MAP_INFO) {
    SetError(QXW_ERR_NO_MAP_INFO);
    return -1;
  }
  return 0;
}

QXwMapInfo* QXwGetMapInfo(void) {
  Call call(k_QXwGetMapInfo);
  if (call.Failing()) return nullptr;
  Map* map = OpenMap(nullptr, false);
  return map == nullptr ? nullptr : BuildMapInfo(*map);
}

void QXwFreeMapInfo(QXwMapInfo* map) {
  CountCall(k_QXwFreeMapInfo);
  Arena::Release(map);
}

int QXwProcessEvent(void) {
  Call call(k_QXwProcessEvent);
  if (call.Failing()) return -1;
  Emulator& emu = Emu();
  Session& s = emu.session;
  if (!s.open || s.ended) {
    SetError(QXW_ERR_NO_SESSION);
    return -1;
  }
  LoopScope scope(emu);
  std::unique_lock<std::mutex>& lock = call.lock();
  for (;;) {
    if (!s.events.empty()) {
      DeliverOne(lock);
      return 0;
    }
    if (!emu.pending.empty()) {
      PendingCommand command = emu.pending.front();
      emu.pending.pop_front();
      Reply(command, Answer(command));
      return 0;
    }
    std::vector<pollfd> fds;
    if (emu.wakeRead >= 0) fds.push_back(pollfd{emu.wakeRead, POLLIN, 0});
    AddControlFds(s, &fds);
    size_t firstInput = fds.size();
    std::vector<Input> inputs = s.inputs;
    for (const Input& in : inputs) fds.push_back(pollfd{in.fd, POLLIN, 0});
    lock.unlock();
    int ready = poll(fds.data(), fds.size(), -1);
    lock.lock();
    if (!s.open) return -1;
    if (ready < 0) {
      if (errno == EINTR) continue;
      SetError(QXW_ERR_FAILED, std::string("poll() failed: ") + std::strerror(errno));
      return -1;
    }
    for (size_t i = 0; i < firstInput; ++i) {
      if (fds[i].revents == 0) continue;
      if (fds[i].fd == emu.wakeRead) {
        char drain[64];
        while (read(emu.wakeRead, drain, sizeof(drain)) > 0) {
        }
      } else {
        HandleControlFd(s, fds[i].fd, fds[i].revents);
      }
    }
    for (size_t i = firstInput; i < fds.size(); ++i) {
      if (fds[i].revents == 0) continue;
      const Input& in = inputs[i - firstInput];
      bool stillRegistered = false;
      for (const Input& r : s.inputs) stillRegistered |= r.id == in.id;
      if (!stillRegistered) continue;
      lock.unlock();
      in.proc(in.fd, in.userData);
      lock.lock();
      return 0;
    }
  }
}

int QXwDone(void) {
  Call call(k_QXwDone);
  if (call.Failing()) return -1;
  if (!Emu().session.open) {
    SetError(QXW_ERR_NO_SESSION);
    return -1;
  }
  CloseSession();
  return 0;
}

int QXwAckMapClose(QXwMapInfo*, int) {
  Call call(k_QXwAckMapClose);
  if (call.Failing()) return -1;
  if (!Emu().session.open) {
    SetError(QXW_ERR_NO_SESSION);
    return -1;
  }
  return 0;
}

int QXwAddCallback(int eventType, QXwFieldBindList* filter, QXwCallbackProc handler,
                   void* userData) {
  Call call(k_QXwAddCallback);
  if (call.Failing()) return -1;
  Session& s = Emu().session;
  if (!s.open) {
    SetError(QXW_ERR_NO_SESSION);
    return -1;
  }
  if (!IsEventCode(eventType)) {
    SetError(QXW_ERR_BAD_ARGUMENT, "unknown event type " + std::to_string(eventType));
    return -1;
  }
  if (handler == nullptr) {
    SetError(QXW_ERR_BAD_ARGUMENT, "no handler was given");
    return -1;
  }
  s.registrations.push_back(Registration{eventType, filter, handler, userData});
  return 0;
}

QXwInputId QXwAddInput(int fd, int condition, QXwInputProc handler, void* userData) {
  Call call(k_QXwAddInput);
  if (call.Failing()) return 0;
  Session& s = Emu().session;
  if (!s.open) {
    SetError(QXW_ERR_NO_SESSION);
    return 0;
  }
  if (fd < 0 || condition != QXW_INPUT_READABLE || handler == nullptr) {
    SetError(QXW_ERR_BAD_ARGUMENT, "an input needs a descriptor, condition 1 and a handler");
    return 0;
  }
  QXwInputId id = s.nextInputId++;
  s.inputs.push_back(Input{id, fd, handler, userData});
  return id;
}

int QXwRemoveInput(QXwInputId id) {
  Call call(k_QXwRemoveInput);
  if (call.Failing()) return -1;
  Session& s = Emu().session;
  auto removed = EraseIf(s.inputs, [id](const Input& in) { return in.id == id; });
  if (removed == 0) {
    SetError(QXW_ERR_BAD_ARGUMENT, "no input " + std::to_string(id) + " is registered");
    return -1;
  }
  return 0;
}

int QXwError(void) {
  CountCall(k_QXwError);
  return LastErrorCode();
}

char* QXwErrorMsg(int errorCode) {
  CountCall(k_QXwErrorMsg);
  thread_local std::string text;
  text = ErrorText(errorCode);
  return text.data();
}

}  // extern "C"
