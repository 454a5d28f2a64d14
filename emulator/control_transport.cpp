// The control socket: listening, accepting connections, reading their
// command lines into the queue of the event loop, and sending the replies
// without ever waiting for a client.
#include "emulator/control_transport.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <deque>

#include "emulator/control.h"
#include "emulator/control_syntax.h"
#include "emulator/erase.h"
#include "emulator/qxwemu.h"

namespace qxwemu {

namespace {

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

// Whether a command from the connection `fd` still waits for its reply.
bool HasPendingFor(int fd) {
  for (const PendingCommand& c : Emu().pending) {
    if (c.connection == fd) return true;
  }
  return false;
}

// Closes the connection `fd` and drops its commands that wait.
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

void QueueCommand(PendingCommand command) {
  Emu().pending.push_back(std::move(command));
  Emu().commandQueued.notify_all();
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
