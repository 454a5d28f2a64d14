// The emulator's own C++ interface, for tests and tools: the control
// protocol without a socket.
#ifndef SKIFF_EMULATOR_QXWEMU_H_
#define SKIFF_EMULATOR_QXWEMU_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace qxwemu {

// The longest control command line: its bytes before the line end. A longer
// line is refused with one error reply as soon as it passes this length, and
// the rest of it, up to its line end, is discarded as it arrives. A
// create-object line may carry many objects, hence the generous size.
constexpr size_t kMaxControlLine = size_t{1} << 20;

// How far a control client may fall behind in reading its replies. A reply
// that finds more than this many bytes still unsent to its client
// disconnects the client instead of being queued. One reply of any size (the
// dump of a large map) is always taken.
constexpr size_t kMaxControlBacklog = size_t{8} << 20;

// Applies one control command and returns its one-line JSON reply. From the
// thread that runs the event loop, or while no thread is inside
// QXwProcessEvent, the command is applied at once; otherwise it is handed to
// the loop and this call waits for the reply.
std::string Control(std::string_view line);

// The number of events queued and not yet delivered.
size_t PendingEvents();

// Waits until at least `count` control commands (from the socket or from
// other threads) are waiting for the event loop. A handler running inside
// the loop can so know that another thread's command has been handed to the
// loop rather than applied on that thread.
void AwaitPendingCommands(size_t count);

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_QXWEMU_H_
