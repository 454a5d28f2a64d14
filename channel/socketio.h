// Sending and receiving messages on a connected stream socket.
#ifndef SKIFF_CHANNEL_SOCKETIO_H_
#define SKIFF_CHANNEL_SOCKETIO_H_

#include <sys/types.h>

#include <cstddef>

#include "channel/protocol.h"

namespace skiff::channel {

// Sends all `length` bytes; false, with errno set, when that fails. Never
// raises SIGPIPE.
bool SendAll(int sock, const char* data, size_t length);

// Receives once into what `assembler` has left: the number of bytes
// received, 0 at the end of the stream, -1 with errno set on failure.
ssize_t ReceiveSome(int sock, MessageAssembler& assembler);

}  // namespace skiff::channel

#endif  // SKIFF_CHANNEL_SOCKETIO_H_
