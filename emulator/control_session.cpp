// The control commands about the session as a whole: the map it has open,
// its end and the call counters.
#include <ctime>
#include <memory>
#include <string>

#include "emulator/arena.h"
#include "emulator/control_commands.h"
#include "emulator/records.h"

namespace qxwemu {

Session& OpenSession() {
  Session& s = Emu().session;
  if (!s.open) throw Refusal{"no session is open"};
  return s;
}

Map& TheMap() {
  Session& s = OpenSession();
  if (s.map == nullptr) throw Refusal{"no map is loaded"};
  return *s.map;
}

// counters: how often each platform function has been called, and how many
// records the platform has handed out that are not released yet.
Json CmdCounters(const Words& w, std::string_view) {
  ExpectWords(w, 1, 1);
  Json counters = Json::object();
  for (int i = 0; i < kFnCount; ++i) {
    counters[FnName(static_cast<Fn>(i))] = Emu().counters[i].load(std::memory_order_relaxed);
  }
  Json reply = Ok();
  reply["counters"] = std::move(counters);
  reply["records"] = Arena::Outstanding();
  return reply;
}

// reset-counters: sets every call counter back to 0.
Json CmdResetCounters(const Words& w, std::string_view) {
  ExpectWords(w, 1, 1);
  for (auto& c : Emu().counters) c.store(0, std::memory_order_relaxed);
  return Ok();
}

// dump: the session's map in map file form, and whether it is open.
Json CmdDump(const Words& w, std::string_view) {
  ExpectWords(w, 1, 1);
  Session& s = OpenSession();
  Json reply = Ok();
  reply["open"] = s.mapOpen;
  reply["map"] = s.map == nullptr ? Json() : DumpMap(*s.map);
  return reply;
}

// open-map [FILE]: loads FILE, or the default map, as the session's map.
Json CmdOpenMap(const Words& w, std::string_view) {
  ExpectWords(w, 1, 2);
  Session& s = OpenSession();
  std::string error;
  std::unique_ptr<Map> map = w.size() == 2 ? LoadMapFile(w[1], &error) : LoadDefaultMap(&error);
  if (map == nullptr) throw Refusal{error};
  s.map = std::move(map);
  s.mapOpen = true;
  Event e;
  e.code = QXW_EVENT_MAP_OPEN;
  e.map = BuildMapInfo(*s.map);
  Queue(e);
  return Ok();
}

// close-map: reports the map closed.
Json CmdCloseMap(const Words& w, std::string_view) {
  ExpectWords(w, 1, 1);
  Session& s = OpenSession();
  Event e;
  e.code = QXW_EVENT_MAP_CLOSE;
  if (s.map != nullptr && s.mapOpen) e.map = BuildMapInfo(*s.map);
  e.time = time(nullptr);
  s.mapOpen = false;
  Queue(e);
  return Ok();
}

// end-session: reports the end of the session.
Json CmdEndSession(const Words& w, std::string_view) {
  ExpectWords(w, 1, 1);
  OpenSession();
  Event e;
  e.code = QXW_EVENT_END_SESSION;
  e.flag = 1;
  Queue(e);
  return Ok();
}

}  // namespace qxwemu
