// The handlers of the control commands, for the command table (control.cpp),
// and what the handlers share: the session and map they act on, and the
// symbol events they queue. Every handler takes the words of its command
// line and the line itself (commands with a JSON argument read the text
// after their words), applies the command to the emulated map, and returns
// the reply; it throws Refusal or MapError, with nothing changed, when the
// command cannot be applied. All run with the emulator's lock held.
#ifndef SKIFF_EMULATOR_CONTROL_COMMANDS_H_
#define SKIFF_EMULATOR_CONTROL_COMMANDS_H_

#include <cstdint>
#include <string_view>
#include <vector>

#include "emulator/control_syntax.h"
#include "emulator/emulator.h"

namespace qxwemu {

// The session; throws Refusal when none is open.
Session& OpenSession();
// The open session's map; throws Refusal when no session is open or no map
// is loaded.
Map& TheMap();
// The symbol `id` of `map`; throws Refusal when it does not exist.
Symbol& SymbolOf(Map& map, uint32_t id);
// The submap or object `id`; refuses with "... does not exist" when there is
// none.
Submap& SubmapOf(Map& map, uint32_t id);
Object& ObjectOf(Map& map, uint32_t id);
// The symbols `ids` of `map`, in that order; throws Refusal when one does
// not exist.
std::vector<Symbol*> SymbolsOf(Map& map, const std::vector<uint32_t>& ids);
// Queues an event `code` that carries `symbols`.
void QueueSymbols(int code, Map& map, const std::vector<const Symbol*>& symbols);

// A command handler: the words of the command line and the line itself.
using CommandHandler = Json(const Words& words, std::string_view line);

// The session and the counters (control_session.cpp).
CommandHandler CmdCounters, CmdResetCounters, CmdDump, CmdOpenMap, CmdCloseMap, CmdEndSession;

// Failures injected into platform functions (failures.cpp).
CommandHandler CmdFail;

// The platform's surprising behaviours (surprises.cpp) and the order in
// which it serves lists (list_order.cpp).
CommandHandler CmdListOrder, CmdCascade, CmdLists, CmdOrder;

// Symbols (control_symbols.cpp). CmdHide hides the symbols, or shows them
// again when `hidden` is false.
Json CmdHide(const Words& w, std::string_view line, bool hidden);
CommandHandler CmdStatus, CmdCreateSymbol, CmdDeleteSymbols, CmdMove, CmdNormalize;

// Submaps, objects and field values (control_entities.cpp).
CommandHandler CmdCreateSubmap, CmdDeleteSubmaps, CmdAutolayout, CmdCreateObject, CmdDeleteObjects,
    CmdSetField;

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_CONTROL_COMMANDS_H_
