// The queue of commands waiting for the event loop, which the control
// socket and the in-process entry point both feed.
#ifndef SKIFF_EMULATOR_CONTROL_TRANSPORT_H_
#define SKIFF_EMULATOR_CONTROL_TRANSPORT_H_

#include "emulator/emulator.h"

namespace qxwemu {

// Adds a command to those waiting for the event loop and wakes whoever
// waits for commands to arrive. The emulator's lock must be held.
void QueueCommand(PendingCommand command);

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_CONTROL_TRANSPORT_H_
