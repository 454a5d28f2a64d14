// Applying a control command: the command table, and the entry points that
// hand a command to it now or through the event loop.
#include "emulator/control.h"

#include <unistd.h>

#include <algorithm>
#include <functional>
#include <mutex>

#include "emulator/control_commands.h"
#include "emulator/control_transport.h"
#include "emulator/qxwemu.h"

namespace qxwemu {

namespace {

// A command: its name, the first word of its line, and its handler.
struct CommandEntry {
  const char* name;
  std::function<Json(const Words&, std::string_view)> run;
};

// The command table, built on first use; a name appears once.
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
      {"list-order", CmdListOrder},
      {"cascade", CmdCascade},
      {"lists", CmdLists},
      {"order", CmdOrder},
  };
  return commands;
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

}  // namespace qxwemu
