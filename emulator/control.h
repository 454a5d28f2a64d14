// The control protocol: commands that change or inspect the emulated map,
// from the control socket or from the in-process entry point (qxwemu.h).
// All functions here are called with the emulator's lock held.
#ifndef SKIFF_EMULATOR_CONTROL_H_
#define SKIFF_EMULATOR_CONTROL_H_

#include <poll.h>

#include <string>
#include <string_view>
#include <vector>

#include "emulator/emulator.h"

namespace qxwemu {

// Applies one command now and returns its one-line JSON reply.
std::string ApplyCommand(std::string_view line);

// Listens on a UNIX-domain socket at `path`; false with a message on failure.
bool OpenControl(Session& session, const std::string& path, std::string* error);
// Closes the listening socket and every connection, and removes the path.
void CloseControl(Session& session);

// The descriptors the event loop waits on for the control channel.
void AddControlFds(const Session& session, std::vector<pollfd>* fds);
// Accepts a connection, reads commands from one (complete lines join the
// queue of pending commands) or sends it the replies it is waiting for.
void HandleControlFd(Session& session, int fd, short revents);

// The reply to a command taken from the queue: the command applied now, or
// the refusal of a line that was over kMaxControlLine.
std::string Answer(const PendingCommand& command);

// Sends a command's reply where the command came from. A socket client gets
// what its socket takes now; the rest waits for the loop to find the socket
// writable, so a client that does not read never holds the loop.
void Reply(const PendingCommand& command, std::string reply);
// Answers every pending command with an error (the session has ended).
void AnswerPendingWithError(const std::string& error);

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_CONTROL_H_
