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
// The symbols `ids` of `map`, in that order; throws Refusal when one does
// not exist.
std::vector<Symbol*> SymbolsOf(Map& map, const std::vector<uint32_t>& ids);
// Queues an event `code` that carries `symbols`.
void QueueSymbols(int code, Map& map, const std::vector<const Symbol*>& symbols);

// The session, the counters and injected failures (control_session.cpp).
Json CmdCounters(const Words& w, std::string_view line);
Json CmdResetCounters(const Words& w, std::string_view line);
Json CmdDump(const Words& w, std::string_view line);
Json CmdOpenMap(const Words& w, std::string_view line);
Json CmdCloseMap(const Words& w, std::string_view line);
Json CmdEndSession(const Words& w, std::string_view line);
Json CmdFail(const Words& w, std::string_view line);

// Symbols (control_symbols.cpp). CmdHide hides the symbols, or shows them
// again when `hidden` is false.
Json CmdHide(const Words& w, std::string_view line, bool hidden);
Json CmdStatus(const Words& w, std::string_view line);
Json CmdCreateSymbol(const Words& w, std::string_view line);
Json CmdDeleteSymbols(const Words& w, std::string_view line);
Json CmdMove(const Words& w, std::string_view line);
Json CmdNormalize(const Words& w, std::string_view line);

// Submaps, objects and field values (control_entities.cpp).
Json CmdCreateSubmap(const Words& w, std::string_view line);
Json CmdDeleteSubmaps(const Words& w, std::string_view line);
Json CmdAutolayout(const Words& w, std::string_view line);
Json CmdCreateObject(const Words& w, std::string_view line);
Json CmdDeleteObjects(const Words& w, std::string_view line);
Json CmdSetField(const Words& w, std::string_view line);

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_CONTROL_COMMANDS_H_
