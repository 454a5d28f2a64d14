// The control commands that change symbols: hide and show them, set their
// status, create, delete, move and normalize them.
#include <cstdint>
#include <string>

#include "emulator/control_commands.h"
#include "emulator/records.h"

namespace qxwemu {

Symbol& SymbolOf(Map& map, uint32_t id) {
  Symbol* s = map.FindSymbol(id);
  if (s == nullptr) throw Refusal{"symbol " + std::to_string(id) + " does not exist"};
  return *s;
}

Submap& SubmapOf(Map& map, uint32_t id) {
  Submap* s = map.FindSubmap(id);
  if (s == nullptr) throw Refusal{"submap " + std::to_string(id) + " does not exist"};
  return *s;
}

Object& ObjectOf(Map& map, uint32_t id) {
  Object* o = map.FindObject(id);
  if (o == nullptr) throw Refusal{"object " + std::to_string(id) + " does not exist"};
  return *o;
}

std::vector<Symbol*> SymbolsOf(Map& map, const std::vector<uint32_t>& ids) {
  std::vector<Symbol*> out;
  for (uint32_t id : ids) out.push_back(&SymbolOf(map, id));
  return out;
}

void QueueSymbols(int code, Map& map, const std::vector<const Symbol*>& symbols) {
  Event e;
  e.code = code;
  e.symbols = BuildSymbolList(map, symbols);
  Queue(e);
}

// hide ID... and unhide ID...
Json CmdHide(const Words& w, std::string_view, bool hidden) {
  Map& map = TheMap();
  std::vector<Symbol*> symbols = SymbolsOf(map, ParseIds(w, 1));
  for (Symbol* s : symbols) s->hidden = hidden;
  QueueSymbols(hidden ? QXW_EVENT_SYMBOLS_HIDDEN : QXW_EVENT_SYMBOLS_UNHIDDEN, map,
               {symbols.begin(), symbols.end()});
  return Ok();
}

// status STATUS ID...
Json CmdStatus(const Words& w, std::string_view) {
  if (w.size() < 3) throw Refusal{"usage: status STATUS ID..."};
  auto status = static_cast<QXwStatusType>(ParseInteger(w[1], 0, 4294967295LL, "the status"));
  Map& map = TheMap();
  std::vector<Symbol*> symbols = SymbolsOf(map, ParseIds(w, 2));
  for (Symbol* s : symbols) s->status = status;
  QueueSymbols(QXW_EVENT_SYMBOLS_STATUS, map, {symbols.begin(), symbols.end()});
  return Ok();
}

// create-symbol JSON: one symbol in map file form; the id is the next free
// one unless given.
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

// delete-symbols ID...: the symbols go with the connections attached to
// them; where deletions cascade, more may follow (CascadeRemoval).
Json CmdDeleteSymbols(const Words& w, std::string_view) {
  Map& map = TheMap();
  std::vector<uint32_t> ids = ParseIds(w, 1);
  SymbolsOf(map, ids);  // all must exist
  DeleteSymbols(map, ids);
  return Ok();
}

// move ID PLACEMENT [X Y | PRED]
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

// normalize ID FLAG
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

}  // namespace qxwemu
