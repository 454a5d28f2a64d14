// qxw-monitor driven over its control socket as a person with qxw-ctl would:
// replies, the events the monitor prints, sync, counters, fail, end-session
// ending the monitor; and no client can hold the event loop, neither by
// leaving its replies unread nor by sending a line without end.
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "emulator/qxwemu.h"
#include "tests/support/platform_session.h"

namespace {

const std::string kOk = R"({"ok":true})";

// A client of the socket at `path`, or -1 when nobody listens there.
int Connect(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
  int fd = socket(AF_UNIX, SOCK_STREAM, 0);
  if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0) return fd;
  close(fd);
  return -1;
}

void Send(int fd, const std::string& text) {
  for (size_t sent = 0; sent < text.size();) {
    ssize_t n = send(fd, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
    ASSERT_GT(n, 0);
    sent += static_cast<size_t>(n);
  }
}

// The next line read from `fd` (what is read past it stays in `buffer`), or
// "" when none comes within `ms` or the other end closes.
std::string ReadLine(int fd, std::string* buffer, int ms = 5000) {
  for (size_t nl; (nl = buffer->find('\n')) == std::string::npos;) {
    pollfd p{fd, POLLIN, 0};
    char chunk[65536];
    ssize_t n = poll(&p, 1, ms) <= 0 ? 0 : read(fd, chunk, sizeof(chunk));
    if (n <= 0) return "";
    buffer->append(chunk, static_cast<size_t>(n));
  }
  std::string line = buffer->substr(0, buffer->find('\n'));
  buffer->erase(0, line.size() + 1);
  return line;
}

// qxw-monitor on a map of its own, printing events on a pipe.
class Monitor {
 public:
  Monitor() {
    int out[2];
    EXPECT_EQ(pipe(out), 0);
    pid_ = fork();
    if (pid_ == 0) {
      dup2(out[1], 1);
      close(out[0]);
      setenv("QXW_MAP", mapPath_.c_str(), 1);
      setenv("QXW_CONTROL", socketPath.c_str(), 1);
      execl(SKIFF_BINARY_DIR "/bin/qxw-monitor", "qxw-monitor", nullptr);
      _exit(127);
    }
    close(out[1]);
    out_ = out[0];
    for (int i = 0; i < 500 && (control_ = Connect(socketPath)) < 0; ++i) usleep(10 * 1000);
    EXPECT_GE(control_, 0) << "the monitor's control socket never appeared";
  }
  ~Monitor() {
    if (pid_ > 0 && waitpid(pid_, nullptr, WNOHANG) == 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
    if (control_ >= 0) close(control_);
    close(out_);
    std::remove(mapPath_.c_str());
  }

  // Sends one command and returns its reply, or "" when none comes within
  // `ms`.
  std::string Command(const std::string& command, int ms = 5000) {
    Send(control_, command + "\n");
    return ReadLine(control_, &replies_, ms);
  }
  // The next event line the monitor printed, waiting at most `ms`.
  std::string Event(int ms = 5000) { return ReadLine(out_, &events_, ms); }
  // The exit status once the monitor has ended, or -1 when it does not.
  int WaitExit() {
    for (int i = 0, status = 0; i < 500; ++i, usleep(10 * 1000)) {
      if (waitpid(pid_, &status, WNOHANG) == pid_) {
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
      }
    }
    return -1;
  }

  const std::string socketPath = "/tmp/skiff-monitor-" + std::to_string(getpid()) + ".sock";

 private:
  const std::string mapPath_ = skifftest::WriteTempFile(skifftest::TestMap("platform.json"));
  pid_t pid_ = -1;
  int out_ = -1;
  int control_ = -1;
  std::string replies_, events_;
};

TEST(ControlSocketTest, AClientThatNeverReadsIsDroppedAndOthersAreServed) {
  Monitor monitor;
  const size_t dumps = 2 * qxwemu::kMaxControlBacklog / monitor.Command("dump").size() + 1;
  int idle = Connect(monitor.socketPath);
  std::string commands;
  for (size_t i = 0; i < dumps; ++i) commands += "dump\n";
  Send(idle, commands);
  // The ping comes after the idle client's dumps queued before it, up to the
  // bound of 8 MiB of replies: seconds of work in a sanitizer build on a busy
  // machine. The wait only guards against a hang.
  EXPECT_EQ(monitor.Command("ping", 120 * 1000), kOk);

  // The idle client is dropped once its backlog passes the bound: waiting for
  // the hang-up reads nothing, so the backlog cannot shrink meanwhile.
  pollfd hangup{idle, 0, 0};
  ASSERT_EQ(poll(&hangup, 1, -1), 1);
  size_t replies = 0;
  for (std::string buffer; !ReadLine(idle, &buffer).empty();) ++replies;
  EXPECT_LT(replies, dumps);
  close(idle);
}

TEST(ControlSocketTest, ALineLongerThanTheBoundIsRefusedOnceAsSoonAsItPassesIt) {
  Monitor monitor;
  const size_t bound = qxwemu::kMaxControlLine;
  int fd = Connect(monitor.socketPath);
  std::string buffer;
  Send(fd, "ping" + std::string(bound - 4, ' ') + "\nping\n");
  EXPECT_EQ(ReadLine(fd, &buffer), kOk) << "at the bound";
  EXPECT_EQ(ReadLine(fd, &buffer), kOk);
  for (size_t length : {bound + 1, 3 * bound}) {
    // The refusal comes before the end of the line; the rest of it is dropped.
    Send(fd, "ping" + std::string(length - 4, ' '));
    EXPECT_EQ(ReadLine(fd, &buffer), R"({"ok":false,"error":"the command is longer than )" +
                                         std::to_string(bound) + R"( bytes"})")
        << length;
    Send(fd, "the rest of the line\nping\n");
    EXPECT_EQ(ReadLine(fd, &buffer), kOk) << length;
  }
  close(fd);
}

TEST(MonitorTest, EveryCommandAnswersAndItsEventIsPrintedBeforeSyncAnswers) {
  Monitor monitor;
  EXPECT_EQ(monitor.Command("move 104 2 106"), kOk);
  EXPECT_EQ(monitor.Command("status 5 106"), kOk);
  EXPECT_EQ(monitor.Command("normalize 106 1"), kOk);
  EXPECT_EQ(monitor.Command("autolayout 3 0"), kOk);
  EXPECT_EQ(monitor.Command(
                R"(create-object {"fields": {"Selection Name": "new", "isInterface": true}})"),
            R"({"ok":true,"id":71})");
  EXPECT_EQ(monitor.Command("delete-objects 71"), kOk);
  EXPECT_EQ(monitor.Command("delete-symbols 110"), kOk);
  EXPECT_EQ(monitor.Command("sync"), kOk);
  const char* expected[] = {
      R"({"event":20,"symbol":{"id":104,"submap":3,"object":40,"label":"host1","type":"Computer:Workstation","variety":1,"plane":2,"hidden":true,"status":0,"statusSource":0,"apps":["IP Map"],"placement":2,"pred":106}})",
      R"({"event":25,"symbols":[{"id":106,"submap":3,"object":31,"label":"rtr2","type":"Connector:Router","variety":1,"plane":2,"hidden":false,"status":5,"statusSource":0,"apps":["Other App","IP Map"],"placement":7,"x":0,"y":0}]})",
      R"({"event":39,"symbol":{"id":106,"submap":3,"object":31,"label":"rtr2","type":"Connector:Router","variety":1,"plane":2,"hidden":false,"status":5,"statusSource":0,"apps":["Other App","IP Map"],"placement":7,"x":0,"y":0},"isNormalized":true})",
      R"({"event":40,"submap":{"id":3,"name":"10.1.0","app":"IP Map","policy":0,"parentObject":20,"layoutOn":false}})",
      R"({"event":18,"objects":[{"id":71,"childSubmap":0,"fields":{"Selection Name":"new","isInterface":true}}]})",
      R"({"event":15,"objects":[{"id":71,"childSubmap":0,"fields":{"Selection Name":"new","isInterface":true}}]})",
      R"({"event":14,"symbols":[{"id":110,"submap":4,"object":42,"label":"le1","type":"Card:Ethernet","variety":1,"plane":2,"hidden":false,"status":0,"statusSource":0,"apps":["IP Map"],"placement":0,"x":0,"y":0}]})",
  };
  // Printed already: no waiting allowed.
  for (const char* line : expected) EXPECT_EQ(monitor.Event(0), line);

  EXPECT_EQ(monitor.Command("close-map"), kOk);
  EXPECT_EQ(monitor.Command("open-map"), kOk);
  EXPECT_EQ(monitor.Command("end-session"), kOk);
  EXPECT_EQ(monitor.Event(),
            R"({"event":4,"map":{"name":"test campus","permissions":2,"rootSubmap":1}})");
  EXPECT_EQ(monitor.Event(),
            R"({"event":3,"map":{"name":"campus","permissions":2,"rootSubmap":1}})");
  EXPECT_EQ(monitor.Event(), R"({"event":1,"normalEnd":true})");
  EXPECT_EQ(monitor.WaitExit(), 0);
}

// Runs qxw-ctl with `arguments` and `input` on its standard input; returns
// its output and sets its exit status.
std::string RunCtl(const std::string& arguments, const std::string& input, int* status) {
  std::string inputPath = skifftest::WriteTempFile(input, ".txt");
  std::string command = SKIFF_BINARY_DIR "/bin/qxw-ctl " + arguments + " < " + inputPath;
  FILE* pipe = popen(command.c_str(), "r");
  std::string out;
  char buffer[4096];
  for (size_t n; (n = fread(buffer, 1, sizeof(buffer), pipe)) > 0;) out.append(buffer, n);
  *status = WEXITSTATUS(pclose(pipe));
  std::remove(inputPath.c_str());
  return out;
}

TEST(MonitorTest, TheControlClientTakesCommandsAsArgumentsOrLines) {
  Monitor monitor;
  const std::string socket = "-s " + monitor.socketPath;
  int status = -1;
  EXPECT_EQ(RunCtl(socket + " ping \"unhide 104\" sync", "", &status),
            "{\"ok\":true}\n{\"ok\":true}\n{\"ok\":true}\n");
  EXPECT_EQ(status, 0);
  EXPECT_EQ(monitor.Event(0).rfind("{\"event\":24,\"symbols\":[{\"id\":104,", 0), 0u);
  EXPECT_EQ(
      RunCtl(socket, "ping\n\nhide 999\nping\n", &status),
      "{\"ok\":true}\n{\"ok\":false,\"error\":\"symbol 999 does not exist\"}\n{\"ok\":true}\n");
  EXPECT_EQ(status, 1);
  RunCtl("-s /nonexistent.sock ping", "", &status);
  EXPECT_EQ(status, 2);
}

}  // namespace
