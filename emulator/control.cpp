#include "emulator/control.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <map>
#include <set>
#include <unordered_set>

#include "emulator/arena.h"
#include "emulator/erase.h"
#include "emulator/loader.h"
#include "emulator/qxwemu.h"
#include "emulator/records.h"

namespace qxwemu {

namespace {

// A refused command: the message becomes the reply's "error".
struct Refusal {
  std::string message;
};

// Reads the word that starts at or after `*i`: blanks separate words; a word
// in double quotes may hold blanks, and \" and \\ stand for " and \ inside
// it. False when no word is left.
bool NextWord(std::string_view line, size_t* i, std::string* word) {
  while (*i < line.size() && (line[*i] == ' ' || line[*i] == '\t')) ++*i;
  if (*i >= line.size()) return false;
  word->clear();
  if (line[*i] != '"') {
    while (*i < line.size() && line[*i] != ' ' && line[*i] != '\t') *word += line[(*i)++];
    return true;
  }
  ++*i;
  while (*i < line.size()) {
    char c = line[(*i)++];
    if (c == '"') return true;
    if (c == '\\' && *i < line.size()) c = line[(*i)++];
    *word += c;
  }
  throw Refusal{"unterminated quoted word"};
}

std::vector<std::string> SplitWords(std::string_view line) {
  std::vector<std::string> words;
  std::string word;
  size_t i = 0;
  while (NextWord(line, &i, &word)) words.push_back(word);
  return words;
}

// The text after the first `n` words (a JSON argument).
std::string_view AfterWords(std::string_view line, int n) {
  size_t i = 0;
  std::string word;
  for (int k = 0; k < n && NextWord(line, &i, &word); ++k) {
  }
  return line.substr(i);
}

int64_t ParseInteger(const std::string& word, int64_t min, int64_t max, const char* what) {
  if (word.empty()) throw Refusal{std::string(what) + " is missing"};
  size_t start = word[0] == '-' ? 1 : 0;
  if (start == word.size() || word.size() - start > 12 ||
      !std::all_of(word.begin() + start, word.end(), [](char c) { return c >= '0' && c <= '9'; })) {
    throw Refusal{std::string(what) + " must be an integer, not \"" + word + "\""};
  }
  int64_t n = std::stoll(word);
  if (n < min || n > max) {
    throw Refusal{std::string(what) + " must be from " + std::to_string(min) + " to " +
                  std::to_string(max)};
  }
  return n;
}

uint32_t ParseId(const std::string& word) {
  return static_cast<uint32_t>(ParseInteger(word, 1, 4294967295LL, "an id"));
}

std::vector<uint32_t> ParseIds(const std::vector<std::string>& words, size_t from) {
  if (words.size() <= from) throw Refusal{"at least one id is needed"};
  std::vector<uint32_t> ids;
  for (size_t i = from; i < words.size(); ++i) ids.push_back(ParseId(words[i]));
  return ids;
}

bool ParseFlag(const std::string& word) {
  if (word == "1") return true;
  if (word == "0") return false;
  throw Refusal{"the flag must be 0 or 1, not \"" + word + "\""};
}

void ExpectWords(const std::vector<std::string>& words, size_t min, size_t max) {
  if (words.size() < min || words.size() > max) {
    throw Refusal{"wrong number of arguments for " + words[0]};
  }
}

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

Symbol& SymbolOf(Map& map, uint32_t id) {
  Symbol* s = map.FindSymbol(id);
  if (s == nullptr) throw Refusal{"symbol " + std::to_string(id) + " does not exist"};
  return *s;
}

std::vector<Symbol*> SymbolsOf(Map& map, const std::vector<uint32_t>& ids) {
  std::vector<Symbol*> out;
  for (uint32_t id : ids) out.push_back(&SymbolOf(map, id));
  return out;
}

Json Ok() { return Json{{"ok", true}}; }

Json ParseJsonArgument(std::string_view text) {
  Json j = Json::parse(text.begin(), text.end(), nullptr, false);
  if (j.is_discarded()) throw Refusal{"the argument is not valid JSON"};
  if (!j.is_object()) throw Refusal{"the argument must be a JSON object"};
  return j;
}

void QueueSymbols(int code, Map& map, const std::vector<const Symbol*>& symbols) {
  Event e;
  e.code = code;
  e.symbols = BuildSymbolList(map, symbols);
  Queue(e);
}

// ---- commands ------------------------------------------------------------

using Words = std::vector<std::string>;

Json CmdCounters(const Words& w, std::string_view) {
  ExpectWords(w, 1, 1);
  Json counters = Json::object();
  for (int i = 0; i < kFnCount; ++i) {
    counters[FnName(static_cast<Fn>(i))] = Emu().counters[i].load(std::memory_order_relaxed);
  }
  Json reply = Ok();
  reply["counters"] = std::move(counters);
  return reply;
}

Json CmdResetCounters(const Words& w, std::string_view) {
  ExpectWords(w, 1, 1);
  for (auto& c : Emu().counters) c.store(0, std::memory_order_relaxed);
  return Ok();
}

Json CmdDump(const Words& w, std::string_view) {
  ExpectWords(w, 1, 1);
  Session& s = OpenSession();
  Json reply = Ok();
  reply["open"] = s.mapOpen;
  reply["map"] = s.map == nullptr ? Json() : DumpMap(*s.map);
  return reply;
}

Json CmdHide(const Words& w, std::string_view, bool hidden) {
  Map& map = TheMap();
  std::vector<Symbol*> symbols = SymbolsOf(map, ParseIds(w, 1));
  for (Symbol* s : symbols) s->hidden = hidden;
  QueueSymbols(hidden ? QXW_EVENT_SYMBOLS_HIDDEN : QXW_EVENT_SYMBOLS_UNHIDDEN, map,
               {symbols.begin(), symbols.end()});
  return Ok();
}

Json CmdStatus(const Words& w, std::string_view) {
  if (w.size() < 3) throw Refusal{"usage: status STATUS ID..."};
  auto status = static_cast<QXwStatusType>(ParseInteger(w[1], 0, 4294967295LL, "the status"));
  Map& map = TheMap();
  std::vector<Symbol*> symbols = SymbolsOf(map, ParseIds(w, 2));
  for (Symbol* s : symbols) s->status = status;
  QueueSymbols(QXW_EVENT_SYMBOLS_STATUS, map, {symbols.begin(), symbols.end()});
  return Ok();
}

// Gives an element without an "id" the next free one.
Json WithId(Json element, uint32_t next) {
  if (!element.contains("id")) element["id"] = next;
  return element;
}

Json Created(uint32_t id) {
  Json reply = Ok();
  reply["id"] = id;
  return reply;
}

Json CmdCreateSymbol(const Words&, std::string_view line) {
  std::string_view rest = AfterWords(line, 1);
  Map& map = TheMap();
  Json element = WithId(ParseJsonArgument(rest), map.NextSymbolId());
  Symbol symbol = ParseSymbol(element, map, 1);
  if (map.FindSymbol(symbol.id) != nullptr) {
    throw Refusal{"symbol " + std::to_string(symbol.id) + " already exists"};
  }
  CheckSymbolRefs(map, symbol);
  uint32_t id = symbol.id;
  const Symbol& added = map.AddSymbol(std::move(symbol));
  QueueSymbols(QXW_EVENT_SYMBOLS_CREATED, map, {&added});
  return Created(id);
}

Json CmdDeleteSymbols(const Words& w, std::string_view) {
  Map& map = TheMap();
  std::vector<uint32_t> ids = ParseIds(w, 1);
  SymbolsOf(map, ids);  // all must exist
  QueueSymbols(QXW_EVENT_SYMBOLS_DELETED, map, map.SymbolsToRemove(ids));
  map.RemoveSymbols(ids);
  return Ok();
}

Json CmdMove(const Words& w, std::string_view) {
  if (w.size() < 3) throw Refusal{"usage: move ID PLACEMENT [X Y | PRED]"};
  Map& map = TheMap();
  Symbol& s = SymbolOf(map, ParseId(w[1]));
  int placement = static_cast<int>(ParseInteger(w[2], INT32_MIN, INT32_MAX, "the placement"));
  if (placement == QXW_PLACEMENT_COORDS) {
    ExpectWords(w, 5, 5);
  } else if (placement == QXW_PLACEMENT_AFTER) {
    ExpectWords(w, 4, 4);
  } else {
    ExpectWords(w, 3, 3);
  }
  // A connection has no position of its own: the event is made all the same.
  if (s.variety == QXW_SYMBOL_ICON) {
    if (placement == QXW_PLACEMENT_COORDS) {
      s.x = static_cast<int>(ParseInteger(w[3], INT32_MIN, INT32_MAX, "x"));
      s.y = static_cast<int>(ParseInteger(w[4], INT32_MIN, INT32_MAX, "y"));
      s.pred = 0;
    } else if (placement == QXW_PLACEMENT_AFTER) {
      QXwSymbolId pred = static_cast<QXwSymbolId>(ParseInteger(w[3], 0, 4294967295LL, "pred"));
      if (pred != 0) {
        const Symbol& p = SymbolOf(map, pred);
        if (p.submap != s.submap || pred == s.id) {
          throw Refusal{"pred " + w[3] + " is not another symbol of submap " +
                        std::to_string(s.submap)};
        }
        if (p.variety != QXW_SYMBOL_ICON) throw Refusal{"pred " + w[3] + " is a connection"};
        std::string loop = PredecessorLoop(map, s.id, pred);
        if (!loop.empty()) throw Refusal{"pred " + w[3] + " would make a loop: " + loop};
      }
      s.pred = pred;
    }
    s.placement = placement;
  }
  QueueSymbols(QXW_EVENT_SYMBOL_MOVED, map, {&s});
  return Ok();
}

Json CmdNormalize(const Words& w, std::string_view) {
  ExpectWords(w, 3, 3);
  Map& map = TheMap();
  Symbol& s = SymbolOf(map, ParseId(w[1]));
  s.normalized = ParseFlag(w[2]);
  Event e;
  e.code = QXW_EVENT_SYMBOL_NORMALIZE;
  e.symbols = BuildSymbolList(map, {&s});
  e.flag = s.normalized ? 1 : 0;
  Queue(e);
  return Ok();
}

Json CmdCreateSubmap(const Words&, std::string_view line) {
  std::string_view rest = AfterWords(line, 1);
  Map& map = TheMap();
  Submap submap = ParseSubmap(WithId(ParseJsonArgument(rest), map.NextSubmapId()), 1);
  if (map.FindSubmap(submap.id) != nullptr) {
    throw Refusal{"submap " + std::to_string(submap.id) + " already exists"};
  }
  Object* parent = nullptr;
  if (submap.parentObject != 0) {
    parent = map.FindObject(submap.parentObject);
    if (parent == nullptr) {
      throw Refusal{"object " + std::to_string(submap.parentObject) + " does not exist"};
    }
    if (parent->childSubmap != 0) {
      throw Refusal{"object " + std::to_string(parent->id) + " already has child submap " +
                    std::to_string(parent->childSubmap)};
    }
  }
  uint32_t id = submap.id;
  const Submap& added = map.AddSubmap(std::move(submap));
  if (parent != nullptr) parent->childSubmap = id;
  Event e;
  e.code = QXW_EVENT_SUBMAPS_CREATED;
  e.submaps = BuildSubmapList({&added});
  Queue(e);
  return Created(id);
}

// Reports a removal as the platform reports a deletion, then applies it. The
// events come in the order in which the items depend on each other: the
// symbols deleted (14), then the submaps deleted (16), then the objects
// deleted (15), so that no handler hears of a submap or an object gone
// before it has heard of the symbols on it or of it, nor of a parent object
// gone before its child submap. Each event carries all its items and is
// queued only when there are any; its records are built before anything
// goes, so they show the items as they were (an object with its child
// submap, a submap with its parent object).
void QueueAndRemove(Map& map, const Map::Removal& removal) {
  if (!removal.symbols.empty()) QueueSymbols(QXW_EVENT_SYMBOLS_DELETED, map, removal.symbols);
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

// delete-submaps ID...: the submaps go with every symbol on them and the
// connections attached to those; their parent objects stay, without a
// child submap.
Json CmdDeleteSubmaps(const Words& w, std::string_view) {
  Map& map = TheMap();
  std::vector<uint32_t> ids = ParseIds(w, 1);
  for (uint32_t id : ids) {
    if (map.FindSubmap(id) == nullptr) {
      throw Refusal{"submap " + std::to_string(id) + " does not exist"};
    }
  }
  QueueAndRemove(map, map.SubmapsRemoval(ids));
  return Ok();
}

Json CmdAutolayout(const Words& w, std::string_view) {
  ExpectWords(w, 3, 3);
  Map& map = TheMap();
  uint32_t id = ParseId(w[1]);
  Submap* s = map.FindSubmap(id);
  if (s == nullptr) throw Refusal{"submap " + std::to_string(id) + " does not exist"};
  s->layoutOn = ParseFlag(w[2]);
  Event e;
  e.code = QXW_EVENT_SUBMAP_AUTOLAYOUT;
  e.submaps = BuildSubmapList({s});
  Queue(e);
  return Ok();
}

// create-object JSON: one object, or an array of objects made together in
// one event. Every object is checked before any is added.
Json CmdCreateObject(const Words&, std::string_view line) {
  std::string_view rest = AfterWords(line, 1);
  Map& map = TheMap();
  Json argument = Json::parse(rest.begin(), rest.end(), nullptr, false);
  if (argument.is_discarded()) throw Refusal{"the argument is not valid JSON"};
  const bool many = argument.is_array();
  if (!many) argument = Json::array({ParseJsonArgument(rest)});
  if (argument.empty()) throw Refusal{"no object was given"};

  std::vector<Object> objects;
  std::set<QXwObjectId> ids;
  std::set<std::string> names;
  std::set<QXwSubmapId> children;
  const FieldDef* selectionName = map.FieldByName("Selection Name");
  QXwObjectId next = map.NextObjectId();
  for (size_t i = 0; i < argument.size(); ++i) {
    if (argument[i].is_object() && !argument[i].contains("id")) {
      while (ids.count(next) != 0) ++next;
      argument[i]["id"] = next;
    }
    Object object = ParseObject(argument[i], map, i + 1);
    if (map.FindObject(object.id) != nullptr || !ids.insert(object.id).second) {
      throw Refusal{"object " + std::to_string(object.id) + " already exists"};
    }
    for (const FieldValue& v : object.fields) {
      CheckSelectionNameFree(map, object, v);
      if (selectionName != nullptr && v.field == selectionName->id &&
          !names.insert(v.scalar.text).second) {
        throw Refusal{"selection name \"" + v.scalar.text + "\" is given twice"};
      }
    }
    if (object.childSubmap != 0) {
      const Submap* child = map.FindSubmap(object.childSubmap);
      if (child == nullptr) {
        throw Refusal{"submap " + std::to_string(object.childSubmap) + " does not exist"};
      }
      if (child->parentObject != 0 || !children.insert(child->id).second) {
        throw Refusal{"submap " + std::to_string(child->id) + " already has a parent object"};
      }
    }
    objects.push_back(std::move(object));
  }

  std::vector<const Object*> added;
  Json created = Json::array();
  for (Object& object : objects) {
    created.push_back(object.id);
    if (Submap* child = map.FindSubmap(object.childSubmap)) child->parentObject = object.id;
    added.push_back(&map.AddObject(std::move(object)));
  }
  Event e;
  e.code = QXW_EVENT_OBJECTS_CREATED;
  e.objects = BuildObjectList(map, added);
  Queue(e);
  if (!many) return Created(created[0]);
  Json reply = Ok();
  reply["ids"] = std::move(created);
  return reply;
}

// delete-objects ID...: the objects go with their symbols and their child
// submaps, which take every symbol on them (the objects of those symbols
// stay), and with the connections attached to any symbol that goes.
Json CmdDeleteObjects(const Words& w, std::string_view) {
  Map& map = TheMap();
  std::vector<uint32_t> ids = ParseIds(w, 1);
  for (uint32_t id : ids) {
    if (map.FindObject(id) == nullptr) {
      throw Refusal{"object " + std::to_string(id) + " does not exist"};
    }
  }
  QueueAndRemove(map, map.ObjectsRemoval(ids));
  return Ok();
}

// set-field OBJECT FIELD VALUE: FIELD by name (or id); VALUE as the field's
// text form, or a JSON array for a list field.
Json CmdSetField(const Words& w, std::string_view line) {
  if (w.size() < 4) throw Refusal{"usage: set-field OBJECT FIELD VALUE"};
  Map& map = TheMap();
  uint32_t objectId = ParseId(w[1]);
  Object* object = map.FindObject(objectId);
  if (object == nullptr) throw Refusal{"object " + std::to_string(objectId) + " does not exist"};
  const FieldDef* field = map.FieldByName(w[2]);
  if (field == nullptr && std::all_of(w[2].begin(), w[2].end(), ::isdigit) && !w[2].empty()) {
    field = map.FieldById(ParseId(w[2]));
  }
  if (field == nullptr) throw Refusal{"field \"" + w[2] + "\" does not exist"};
  const std::string entity = "object " + std::to_string(objectId);
  Json value;
  if (field->list) {
    // The value is the rest of the line after the field word.
    std::string_view rest = AfterWords(line, 3);
    value = Json::parse(rest.begin(), rest.end(), nullptr, false);
    if (value.is_discarded()) throw Refusal{"the value of a list field must be a JSON array"};
  } else {
    ExpectWords(w, 4, 4);
    const std::string& text = w[3];
    switch (field->type) {
      case QXW_FIELD_INTEGER:
        value = ParseInteger(text, INT32_MIN, 4294967295LL, "the value");
        break;
      case QXW_FIELD_BOOLEAN:
        if (text == "TRUE" || text == "true" || text == "1") {
          value = true;
        } else if (text == "FALSE" || text == "false" || text == "0") {
          value = false;
        } else {
          throw Refusal{"a boolean value is TRUE or FALSE, not \"" + text + "\""};
        }
        break;
      case QXW_FIELD_ENUMERATION:
        if (!text.empty() && std::all_of(text.begin(), text.end(), ::isdigit)) {
          value = ParseInteger(text, 0, INT32_MAX, "the value");
        } else {
          value = text;
        }
        break;
      default:
        value = text;
    }
  }
  FieldValue parsed = ParseFieldValue(*field, value, entity);
  CheckSelectionNameFree(map, *object, parsed);
  map.SetField(*object, std::move(parsed));
  return Ok();
}

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

Json CmdEndSession(const Words& w, std::string_view) {
  ExpectWords(w, 1, 1);
  OpenSession();
  Event e;
  e.code = QXW_EVENT_END_SESSION;
  e.flag = 1;
  Queue(e);
  return Ok();
}

Json CmdFail(const Words& w, std::string_view) {
  ExpectWords(w, 2, 4);
  std::optional<Fn> fn = FnByName(w[1]);
  if (!fn) throw Refusal{"unknown platform function \"" + w[1] + "\""};
  if (!FnCanFail(*fn)) throw Refusal{w[1] + " cannot fail"};
  Failure& f = Emu().failures[*fn];
  if (w.size() >= 3 && w[2] == "off") {
    ExpectWords(w, 3, 3);
    f = Failure();
    return Ok();
  }
  Failure next;
  next.active = true;
  if (w.size() >= 3)
    next.code = static_cast<int>(ParseInteger(w[2], INT32_MIN, INT32_MAX, "the code"));
  if (w.size() == 4) next.remaining = ParseInteger(w[3], 1, INT32_MAX, "the count");
  f = next;
  return Ok();
}

struct CommandEntry {
  const char* name;
  std::function<Json(const Words&, std::string_view)> run;
};

const std::vector<CommandEntry>& Commands() {
  static const std::vector<CommandEntry> commands = {
      {"ping",
       [](const Words& w, std::string_view) {
         ExpectWords(w, 1, 1);
         return Ok();
       }},
      {"sync",
       [](const Words& w, std::string_view) {
         ExpectWords(w, 1, 1);
         return Ok();
       }},
      {"dump", CmdDump},
      {"counters", CmdCounters},
      {"reset-counters", CmdResetCounters},
      {"hide", [](const Words& w, std::string_view r) { return CmdHide(w, r, true); }},
      {"unhide", [](const Words& w, std::string_view r) { return CmdHide(w, r, false); }},
      {"status", CmdStatus},
      {"create-symbol", CmdCreateSymbol},
      {"delete-symbols", CmdDeleteSymbols},
      {"move", CmdMove},
      {"normalize", CmdNormalize},
      {"create-submap", CmdCreateSubmap},
      {"delete-submaps", CmdDeleteSubmaps},
      {"autolayout", CmdAutolayout},
      {"create-object", CmdCreateObject},
      {"delete-objects", CmdDeleteObjects},
      {"set-field", CmdSetField},
      {"open-map", CmdOpenMap},
      {"close-map", CmdCloseMap},
      {"end-session", CmdEndSession},
      {"fail", CmdFail},
  };
  return commands;
}

Json Refused(const std::string& message) { return Json{{"ok", false}, {"error", message}}; }

// Sends as much of the connection's waiting output as its socket takes now,
// never waiting for it. False when the peer has gone away.
bool Flush(ControlConnection& c) {
  while (!c.output.empty()) {
    const std::string& front = c.output.front();
    ssize_t n = send(c.fd, front.data() + c.frontSent, front.size() - c.frontSent,
                     MSG_NOSIGNAL | MSG_DONTWAIT);
    if (n < 0) {
      if (errno == EINTR) continue;
      return errno == EAGAIN || errno == EWOULDBLOCK;
    }
    c.frontSent += static_cast<size_t>(n);
    c.unsent -= static_cast<size_t>(n);
    if (c.frontSent == front.size()) {
      c.output.pop_front();
      c.frontSent = 0;
    }
  }
  return true;
}

// Adds a command to those waiting for the event loop.
void QueueCommand(PendingCommand command) {
  Emu().pending.push_back(std::move(command));
  Emu().commandQueued.notify_all();
}

bool HasPendingFor(int fd) {
  for (const PendingCommand& c : Emu().pending) {
    if (c.connection == fd) return true;
  }
  return false;
}

void CloseConnection(Session& session, int fd) {
  close(fd);
  EraseIf(session.connections, [fd](const ControlConnection& c) { return c.fd == fd; });
  EraseIf(Emu().pending, [fd](const PendingCommand& c) { return c.connection == fd; });
}

// Closes a connection whose peer has finished sending once it has had every
// reply; true when it did.
bool CloseWhenDone(Session& session, const ControlConnection& c) {
  if (!c.eof || c.unsent != 0 || HasPendingFor(c.fd)) return false;
  CloseConnection(session, c.fd);
  return true;
}

// Queues the refusal of a line over kMaxControlLine in its turn among the
// connection's commands, so that replies keep the order of the lines.
void QueueTooLong(const ControlConnection& c) {
  QueueCommand(PendingCommand{std::string(), c.fd, nullptr, true});
}

// Takes the complete lines received on the connection as commands. Only text
// received since the last call is scanned for line ends. A line over
// kMaxControlLine is refused once, as soon as it is known to be too long, and
// what follows of it up to its line end is dropped as it arrives: the
// connection never holds more than one line's worth of text.
void TakeLines(ControlConnection& c, bool atEnd) {
  size_t start = 0;
  for (size_t nl; (nl = c.buffer.find('\n', c.scanned)) != std::string::npos;) {
    if (c.discarding) {
      c.discarding = false;  // the end of a line refused already
    } else if (nl - start > kMaxControlLine) {
      QueueTooLong(c);
    } else {
      std::string line = c.buffer.substr(start, nl - start);
      if (!line.empty() && line.back() == '\r') line.pop_back();
      if (line.find_first_not_of(" \t") != std::string::npos) {
        QueueCommand(PendingCommand{std::move(line), c.fd, nullptr});
      }
    }
    start = c.scanned = nl + 1;
  }
  c.buffer.erase(0, start);
  if (!c.discarding && c.buffer.size() > kMaxControlLine) {
    QueueTooLong(c);
    c.discarding = true;
  }
  if (atEnd && !c.discarding && c.buffer.find_first_not_of(" \t\r") != std::string::npos) {
    QueueCommand(PendingCommand{c.buffer, c.fd, nullptr});
  }
  if (c.discarding || atEnd) c.buffer.clear();
  c.scanned = c.buffer.size();
}

}  // namespace

std::string ApplyCommand(std::string_view line) {
  Json reply;
  try {
    std::vector<std::string> words = SplitWords(line);
    if (words.empty()) throw Refusal{"empty command"};
    const auto& commands = Commands();
    auto it = std::find_if(commands.begin(), commands.end(),
                           [&](const CommandEntry& c) { return words[0] == c.name; });
    if (it == commands.end()) throw Refusal{"unknown command \"" + words[0] + "\""};
    reply = it->run(words, line);  // JSON commands read the text after their word
  } catch (const Refusal& r) {
    reply = Refused(r.message);
  } catch (const MapError& e) {
    reply = Refused(e.what());
  } catch (const std::exception& e) {
    reply = Refused(e.what());
  }
  return reply.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string Answer(const PendingCommand& command) {
  if (!command.tooLong) return ApplyCommand(command.line);
  return Refused("the command is longer than " + std::to_string(kMaxControlLine) + " bytes").dump();
}

std::string Control(std::string_view line) {
  Emulator& emu = Emu();
  std::unique_lock<std::mutex> lock(emu.mu);
  if (emu.loopInside && emu.loopThread != std::this_thread::get_id()) {
    Waiter waiter;
    QueueCommand(PendingCommand{std::string(line), -1, &waiter});
    char byte = 1;
    [[maybe_unused]] ssize_t n = write(emu.wakeWrite, &byte, 1);
    waiter.done.wait(lock, [&] { return waiter.ready; });
    return waiter.reply;
  }
  return ApplyCommand(line);
}

size_t PendingEvents() {
  std::lock_guard<std::mutex> lock(Emu().mu);
  return Emu().session.events.size();
}

void AwaitPendingCommands(size_t count) {
  Emulator& emu = Emu();
  std::unique_lock<std::mutex> lock(emu.mu);
  emu.commandQueued.wait(lock, [&] { return emu.pending.size() >= count; });
}

void Reply(const PendingCommand& command, std::string reply) {
  if (command.waiter != nullptr) {
    command.waiter->reply = std::move(reply);
    command.waiter->ready = true;
    command.waiter->done.notify_all();
    return;
  }
  Session& session = Emu().session;
  auto c = std::find_if(session.connections.begin(), session.connections.end(),
                        [&](const ControlConnection& k) { return k.fd == command.connection; });
  if (c == session.connections.end()) return;
  // A client that leaves more than kMaxControlBacklog bytes of replies unread
  // is disconnected: the loop never waits for a client to read, and this
  // bounds what a client that never reads can make the emulator hold.
  if (c->unsent > kMaxControlBacklog) {
    CloseConnection(session, c->fd);
    return;
  }
  reply += '\n';
  c->unsent += reply.size();
  c->output.push_back(std::move(reply));
  if (!Flush(*c)) {
    CloseConnection(session, c->fd);  // the peer went away
    return;
  }
  CloseWhenDone(session, *c);
}

void AnswerPendingWithError(const std::string& error) {
  std::deque<PendingCommand> pending;
  pending.swap(Emu().pending);
  const std::string reply = Refused(error).dump();
  for (const PendingCommand& c : pending) {
    if (c.waiter != nullptr) Reply(c, reply);
  }
}

bool OpenControl(Session& session, const std::string& path, std::string* error) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof(address.sun_path)) {
    *error = "QXW_CONTROL: the path " + path + " is too long for a socket";
    return false;
  }
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) {
    *error = std::string("QXW_CONTROL: socket() failed: ") + std::strerror(errno);
    return false;
  }
  struct stat st {};
  if (lstat(path.c_str(), &st) == 0 && S_ISSOCK(st.st_mode)) unlink(path.c_str());
  if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 ||
      listen(fd, 16) != 0) {
    *error = "QXW_CONTROL: cannot listen on " + path + ": " + std::strerror(errno);
    close(fd);
    return false;
  }
  session.controlListen = fd;
  session.controlPath = path;
  return true;
}

void CloseControl(Session& session) {
  for (const ControlConnection& c : session.connections) close(c.fd);
  session.connections.clear();
  EraseIf(Emu().pending, [](const PendingCommand& c) { return c.waiter == nullptr; });
  if (session.controlListen >= 0) {
    close(session.controlListen);
    unlink(session.controlPath.c_str());
    session.controlListen = -1;
  }
}

void AddControlFds(const Session& session, std::vector<pollfd>* fds) {
  if (session.controlListen >= 0) fds->push_back(pollfd{session.controlListen, POLLIN, 0});
  for (const ControlConnection& c : session.connections) {
    short events = (c.eof ? 0 : POLLIN) | (c.unsent != 0 ? POLLOUT : 0);
    if (events != 0) fds->push_back(pollfd{c.fd, events, 0});
  }
}

void HandleControlFd(Session& session, int fd, short revents) {
  if (fd == session.controlListen) {
    int client = accept4(fd, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (client >= 0) {
      ControlConnection connection;
      connection.fd = client;
      session.connections.push_back(std::move(connection));
    }
    return;
  }
  auto c = std::find_if(session.connections.begin(), session.connections.end(),
                        [&](const ControlConnection& k) { return k.fd == fd; });
  if (c == session.connections.end()) return;
  if (c->unsent != 0 && (revents & (POLLOUT | POLLHUP | POLLERR)) != 0) {
    if (!Flush(*c)) {
      CloseConnection(session, fd);  // the peer went away
      return;
    }
    if (CloseWhenDone(session, *c)) return;
  }
  if (c->eof || (revents & (POLLIN | POLLHUP | POLLERR)) == 0) return;
  char buffer[4096];
  ssize_t n = recv(fd, buffer, sizeof(buffer), 0);
  if (n > 0) {
    c->buffer.append(buffer, static_cast<size_t>(n));
    TakeLines(*c, false);
    return;
  }
  if (n < 0 && (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK)) return;
  // End of stream: commands already received are still answered.
  TakeLines(*c, true);
  c->eof = true;
  CloseWhenDone(session, *c);
}

}  // namespace qxwemu
