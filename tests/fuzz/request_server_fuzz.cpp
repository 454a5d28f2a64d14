// Fuzz target: the request server. The input is what the client connection
// delivers: the real receive, message assembly, parsing, dispatch and serving
// operations answer it over a socket pair, in the dispatcher's session
// (dispatcher_session.h; its map loaded afresh after an input that may have
// changed it), the map's events delivered between reads as the event loop
// does. Every NUL sent ends one request (served, or dropped for its length),
// and each gets one answer, "0" or "1"; no local reference is left behind.
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <thread>

#include "channel/protocol.h"
#include "dispatcher/main.h"
#include "tests/fuzz/dispatcher_session.h"
#include "tests/fuzz/fake_java.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 16384) return 0;  // larger requests are dropped anyway
  fuzzsession::Open();
  static bool changed = false;
  if (changed) fuzzsession::Reload();
  // A state request may change the map.
  std::istringstream sent(std::string(reinterpret_cast<const char*>(data), size));
  changed = false;
  for (std::string r; std::getline(sent, r, '\0');)
    changed = changed || std::atoi(r.c_str()) >= skiff::channel::kSetAcknowledgeState;
  int ends[2];  // the client's, the server's
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) std::abort();
  if (write(ends[0], data, size) != static_cast<ssize_t>(size)) std::abort();
  shutdown(ends[0], SHUT_WR);
  std::string answers;
  std::thread client([&] {
    char buffer[4096];
    for (ssize_t n; (n = read(ends[0], buffer, sizeof(buffer))) > 0;) answers.append(buffer, n);
  });
  int pending = 0;
  while (ioctl(ends[1], FIONREAD, &pending) == 0 && pending > 0) {
    QxwEventDispatcher::ServiceJavaRequestCB(ends[1], nullptr);
    if (fakejava::LiveLocals() != 0) std::abort();
    fuzzsession::DeliverEvents();
  }
  QxwEventDispatcher::ServiceJavaRequestCB(ends[1], nullptr);  // the end: forgets a partial one
  close(ends[1]);
  fakejava::Return();
  client.join();
  close(ends[0]);
  const size_t requests = std::count(data, data + size, '\0');
  if (answers.size() != 2 * requests) std::abort();
  for (size_t i = 0; i < answers.size(); i += 2) {
    if ((answers[i] != '0' && answers[i] != '1') || answers[i + 1] != '\0') std::abort();
  }
  return 0;
}
