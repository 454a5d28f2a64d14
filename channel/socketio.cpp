#include "channel/socketio.h"

#include <sys/socket.h>

#include <cerrno>

namespace skiff::channel {

bool SendAll(int sock, const char* data, size_t length) {
  while (length > 0) {
    ssize_t sent = send(sock, data, length, MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent < 0) return false;
    data += sent;
    length -= static_cast<size_t>(sent);
  }
  return true;
}

ssize_t ReceiveSome(int sock, MessageAssembler& assembler) {
  ssize_t received;
  do {
    received = recv(sock, assembler.space(), assembler.spaceLeft(), 0);
  } while (received < 0 && errno == EINTR);
  if (received > 0) assembler.Received(static_cast<size_t>(received));
  return received;
}

}  // namespace skiff::channel
