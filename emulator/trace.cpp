// The platform's trace facility: one line per entry and exit record,
// appended to the file named by QXW_TRACE.
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "platform/qxtrace.h"

namespace {

int TraceFd() {
  static const int fd = [] {
    const char* path = std::getenv("QXW_TRACE");
    if (path == nullptr || *path == '\0') return -1;
    return open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  }();
  return fd;
}

void Record(const char* what, const char* scope) {
  int fd = TraceFd();
  if (fd < 0) return;
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  char line[512];
  int n = std::snprintf(line, sizeof(line), "%lld.%06ld %ld %s %s\n",
                        static_cast<long long>(now.tv_sec), now.tv_nsec / 1000,
                        static_cast<long>(syscall(SYS_gettid)), what, scope ? scope : "?");
  if (n <= 0) return;
  if (n >= static_cast<int>(sizeof(line))) {
    n = sizeof(line) - 1;
    line[n - 1] = '\n';
  }
  // One write per line, so lines of several threads never interleave.
  [[maybe_unused]] ssize_t written = write(fd, line, static_cast<size_t>(n));
}

}  // namespace

extern "C" {

int _QXtraceActive(void) { return TraceFd() >= 0 ? 1 : 0; }
void _QXtraceEnter(const char* scope) { Record("enter", scope); }
void _QXtraceExit(const char* scope) { Record("exit", scope); }

}  // extern "C"
