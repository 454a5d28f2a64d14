// qxw-ctl: the emulator's control client. Sends each command (one per
// argument, or one per line of standard input) over the control socket and
// prints each reply line.
//
//   qxw-ctl [-s SOCKET] [COMMAND...]
//
// SOCKET defaults to $QXW_CONTROL. Exit status: 0 when every command was
// accepted, 1 when one was refused, 2 when the emulator cannot be reached.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

namespace {

int Connect(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof(address.sun_path)) {
    std::fprintf(stderr, "qxw-ctl: socket path too long: %s\n", path.c_str());
    return -1;
  }
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0 || connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
    std::fprintf(stderr, "qxw-ctl: cannot connect to %s: %s\n", path.c_str(), std::strerror(errno));
    if (fd >= 0) close(fd);
    return -1;
  }
  return fd;
}

bool SendLine(int fd, const std::string& command) {
  std::string line = command + "\n";
  size_t sent = 0;
  while (sent < line.size()) {
    ssize_t n = send(fd, line.data() + sent, line.size() - sent, MSG_NOSIGNAL);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    sent += static_cast<size_t>(n);
  }
  return true;
}

// Reads one reply line; false at the end of the stream.
bool ReadLine(int fd, std::string* pending, std::string* line) {
  for (;;) {
    size_t nl = pending->find('\n');
    if (nl != std::string::npos) {
      *line = pending->substr(0, nl);
      pending->erase(0, nl + 1);
      return true;
    }
    char buffer[65536];
    ssize_t n = recv(fd, buffer, sizeof(buffer), 0);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    pending->append(buffer, static_cast<size_t>(n));
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::string path = std::getenv("QXW_CONTROL") ? std::getenv("QXW_CONTROL") : "";
  std::vector<std::string> commands;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    if ((arg == "-s" || arg == "--socket") && i + 1 < argc) {
      path = argv[++i];
    } else if (arg == "-h" || arg == "--help") {
      std::printf("usage: qxw-ctl [-s SOCKET] [COMMAND...]\n");
      return 0;
    } else {
      commands.push_back(arg);
    }
  }
  if (path.empty()) {
    std::fprintf(stderr, "qxw-ctl: no socket: give -s SOCKET or set QXW_CONTROL\n");
    return 2;
  }
  int fd = Connect(path);
  if (fd < 0) return 2;
  bool fromStdin = commands.empty();
  std::string pending;
  int status = 0;
  std::string command;
  size_t next = 0;
  for (;;) {
    if (fromStdin) {
      if (!std::getline(std::cin, command)) break;
      if (command.find_first_not_of(" \t\r") == std::string::npos) continue;
    } else {
      if (next == commands.size()) break;
      command = commands[next++];
    }
    std::string reply;
    if (!SendLine(fd, command) || !ReadLine(fd, &pending, &reply)) {
      std::fprintf(stderr, "qxw-ctl: the emulator closed the connection\n");
      close(fd);
      return 2;
    }
    std::printf("%s\n", reply.c_str());
    std::fflush(stdout);
    if (reply.rfind("{\"ok\":false", 0) == 0) status = 1;
  }
  close(fd);
  return status;
}
